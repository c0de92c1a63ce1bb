#pragma once

#include <QString>

// A path stored in a template (a picture, a background) made absolute: a
// relative path is taken from the host's data folder
// (ZWMarentaSetup::GetDataDirectory); an absolute one stays as it is.
// Backslashes, as written on Windows, are read as folder separators.
QString RelativePathToFullPath(const QString& path);
