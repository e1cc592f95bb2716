// Writes the sample engine's example work (scripts/make-sample-work runs it), or a large
// generated work for measurements, and the engine's icon.
#include "sampleart.h"
#include "samplework.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Writes the sample work of the sample engine."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("directory"), QStringLiteral("Where the work goes."));
    const QCommandLineOption large(QStringLiteral("large"),
                                   QStringLiteral("A generated work of that many sprites, animations and sounds."),
                                   QStringLiteral("sprites,animations,sounds"));
    const QCommandLineOption icon(QStringLiteral("icon"), QStringLiteral("Also write the engine's icon there."),
                                  QStringLiteral("file"));
    parser.addOption(large);
    parser.addOption(icon);
    parser.process(app);
    if (parser.positionalArguments().size() != 1) {
        err << "make-sample-work: give one directory (see --help)\n";
        return 2;
    }
    const QString directory = parser.positionalArguments().constFirst();

    QString error;
    bool written = false;
    if (parser.isSet(large)) {
        const QStringList counts = parser.value(large).split(QLatin1Char(','));
        if (counts.size() != 3) {
            err << "make-sample-work: --large takes three numbers: sprites,animations,sounds\n";
            return 2;
        }
        written = SampleWork::writeLarge(directory, {counts.at(0).toInt(), counts.at(1).toInt(), counts.at(2).toInt()}, &error);
    } else {
        written = SampleWork::write(directory, &error);
    }
    if (written && parser.isSet(icon) && !SampleArt::icon().save(parser.value(icon), "PNG")) {
        error = QStringLiteral("Can't write the icon %1").arg(parser.value(icon));
        written = false;
    }
    if (!written) {
        err << "make-sample-work: " << error << '\n';
        return 3;
    }
    return 0;
}
