#pragma once

#include "foundation/global.h"

#include <QMessageBox>
#include <QString>

#include <functional>

namespace Ovra {

// One question or notice that the library puts to the user.
struct Prompt
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    QWidget *parent = nullptr;
};

// Who answers prompts when there is no one to click: tests script the user with it,
// a command-line host decides by policy.
using Answerer = std::function<QMessageBox::StandardButton(const Prompt &)>;

// Model code raises its questions here and never builds message boxes itself.
// With an answerer installed, it answers. Otherwise a widget application shows the
// box (from any thread: the box itself always opens on the GUI thread), and a
// process without widgets writes the prompt to the warning stream and gets the
// escape answer (No, or Cancel, or the default button), which never retries forever.
OVRA_EXPORT QMessageBox::StandardButton ask(const Prompt &prompt);

// A notice with an OK button.
OVRA_EXPORT void tell(QMessageBox::Icon icon, const QString &title, const QString &text,
                      QWidget *parent = nullptr);

// Installs an answerer, or none with an empty function; returns the one before.
OVRA_EXPORT Answerer setAnswerer(Answerer answerer);

// The answer ask() gives when nobody can be asked.
OVRA_EXPORT QMessageBox::StandardButton escapeAnswer(const Prompt &prompt);

} // namespace Ovra
