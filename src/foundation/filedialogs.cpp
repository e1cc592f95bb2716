#include "foundation/filedialogs.h"

#include "foundation/interface.h"

#include <QFileDialog>

namespace Ovra {
namespace {

bool hostOption(const char *name)
{
    return Interface::instance()->option(QLatin1String(name), QVariant()).toBool();
}

QFileDialog::Options openOptions()
{
    return hostOption("use_native_open") ? QFileDialog::Options() : QFileDialog::DontUseNativeDialog;
}

} // namespace

QString getOpenFileName(QWidget *parent, const QString &title, const QString &directory,
                        const QString &filter)
{
    return QFileDialog::getOpenFileName(parent, title, directory, filter, nullptr, openOptions());
}

QStringList getOpenFileNames(QWidget *parent, const QString &title, const QString &directory,
                             const QString &filter)
{
    QStringList names =
        QFileDialog::getOpenFileNames(parent, title, directory, filter, nullptr, openOptions());
    if (hostOption("sort_file_names"))
        names.sort(Qt::CaseSensitive);
    return names;
}

QString getSaveFileName(QWidget *parent, const QString &title, const QString &directory,
                        const QString &filter)
{
    return QFileDialog::getSaveFileName(parent, title, directory, filter);
}

QString getExistingDirectory(QWidget *parent, const QString &title, const QString &directory)
{
    return QFileDialog::getExistingDirectory(parent, title, directory, QFileDialog::ShowDirsOnly);
}

} // namespace Ovra
