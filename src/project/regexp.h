#pragma once

#include "foundation/global.h"

#include <QRegularExpression>

namespace Ovra {

// The search pattern of editors and files.
class OVRA_EXPORT RegExp : public QRegularExpression
{
public:
    using QRegularExpression::QRegularExpression;
    RegExp() = default;
    RegExp(const QRegularExpression &expression) : QRegularExpression(expression) {}

    QRegularExpressionMatch match(const QString &text, int offset = 0) const
    {
        return QRegularExpression::match(text, offset);
    }
    QRegularExpressionMatchIterator globalMatch(const QString &text) const
    {
        return QRegularExpression::globalMatch(text);
    }
};

} // namespace Ovra
