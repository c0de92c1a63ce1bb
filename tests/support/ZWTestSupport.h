#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <ostream>
#include <string>

// Failed comparisons of texts show the texts.
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace zwtest {

// A file of the source tree (examples, fixtures).
QString SourcePath(const QString& relative);
QByteArray ReadFile(const QString& path);
bool WriteFile(const QString& path, const QByteArray& data);
// "two-formula loop, other order" as "TwoFormulaLoopOtherOrder": a case's
// description as the name of a parameterised test.
std::string CaseName(const char* description);
// "(1<2)+1" as "Open1Lt2ClosePlus1": a formula or other short text spelled
// out as the name of a parameterised test, one distinct word per symbol.
std::string SpelledName(const QString& text);

// Parameterised cases with a description print as it (bring it in with
// `using zwtest::PrintTo;` where the case type is declared).
template <class Case>
requires requires(const Case& c)
{
    c.what;
}
void PrintTo(const Case& c, std::ostream* os)
{
    *os << c.what;
}

} // namespace zwtest
