#pragma once

// Running Lua in tests: the error a piece of code raises, and the value of an expression.
#include "engine/script/state.h"

#include <QVariant>

// The code's error, or "(no error)" when it runs through.
inline QString scriptError(Ovra::Script::State &state, const QString &code)
{
    QString error;
    if (state.run(code, QStringLiteral("test.lua"), &error))
        return QStringLiteral("(no error)");
    return error;
}

// The expression's value; "(failed)", with the error as a warning, when it raises one.
inline QVariant scriptResult(Ovra::Script::State &state, const QString &expression)
{
    QString error;
    if (!state.run(QStringLiteral("result = ") + expression, QStringLiteral("test.lua"), &error)) {
        qWarning("%s", qPrintable(error));
        return QStringLiteral("(failed)");
    }
    return state.globals().get<QVariant>("result");
}
