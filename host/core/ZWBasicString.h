#pragma once

#include <QByteArray>
#include <QString>

// Text of the module: names, formulas, paths and XML values are UTF-16
// strings; serialised XML travels as UTF-8 bytes.
using ZWBasicString = QString;
using ZWBasicStringA = QByteArray;
