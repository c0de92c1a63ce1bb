#pragma once

#include "host/core/ZWBasicString.h"

#include <QDialog>

class QButtonGroup;
class QSpinBox;

// The wizard's page for an operator, a parenthesis or a constant (pi, e),
// one option each; the constants are written with the decimals chosen.
class CDlgAddOtherWizzard : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgAddOtherWizzard(QWidget* parent = nullptr);

    // The element as it goes into the formula.
    ZWBasicString GetElement() const;
    QButtonGroup* Options() const { return m_options; }
    QSpinBox* Decimals() const { return m_decimals; }

    // The option ids of the two constants; the operators are 0 to 15, in
    // the order of ZWWizzardText::OtherElements.
    enum { OptionPi = 16, OptionE = 17 };

private:
    QButtonGroup* m_options;
    QSpinBox* m_decimals;
};
