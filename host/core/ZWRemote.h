#pragma once

#include <QByteArray>
#include <QString>

// Base64 of the host's remote library: how pictures travel inside templates
// and value documents.

// Standard base64 with padding, in one line.
QString EncodeBase64(const QByteArray& bytes);

// An upper bound of the bytes that `text` decodes to (blanks and line breaks
// are not counted), for sizing a buffer before decoding.
qsizetype DecodedBase64Size(const QString& text);

// Decodes `text`. Blanks and line breaks anywhere are ignored and the final
// padding is optional; any other character that is not of the base64
// alphabet, or a length no base64 text can have, makes the text invalid:
// returns false and leaves `out` empty.
bool DecodeBase64(const QString& text, QByteArray& out);
