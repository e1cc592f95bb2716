#pragma once

// Pictures read and written by Python's imaging library, an independent codec the
// exchange tests hold ours against. It runs under the system's own Python, which is the
// one the setup script gives the library to.
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

namespace PilImages {

// The Python with the imaging library, or empty with `error` saying why.
inline QString python(QString *error)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("python3"), {QStringLiteral("/usr/bin")});
    if (program.isEmpty()) {
        *error = QStringLiteral("/usr/bin/python3 is missing: run scripts/setup");
        return QString();
    }
    QProcess probe;
    probe.start(program, {QStringLiteral("-c"), QStringLiteral("import PIL.Image")});
    if (!probe.waitForFinished(60000) || probe.exitCode() != 0) {
        *error = QStringLiteral("Python's imaging library is missing from /usr/bin/python3: run scripts/setup");
        return QString();
    }
    return program;
}

// Runs a script with its arguments; its standard output, or false with `error` said.
inline bool run(const QString &script, const QStringList &arguments, QByteArray *out, QString *error)
{
    const QString program = python(error);
    if (program.isEmpty())
        return false;
    QProcess process;
    process.start(program, QStringList{QStringLiteral("-c"), script} + arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        *error = QStringLiteral("python: %1").arg(QString::fromUtf8(process.readAllStandardError()).trimmed());
        return false;
    }
    if (out)
        *out = process.readAllStandardOutput();
    return true;
}

// What the imaging library makes of a picture file.
struct Picture
{
    QString mode;          // "P", "RGB", "RGBA", "L", "1", ...
    int transparency = -1; // the transparent index it found, -1 for none
    QImage pixels;         // ARGB32, as the library composes them
};

inline bool read(const QString &fileName, Picture *picture, QString *error)
{
    static const QString script = QStringLiteral(
        "import sys\n"
        "from PIL import Image\n"
        "im = Image.open(sys.argv[1])\n"
        "im.load()\n"
        "t = im.info.get('transparency')\n"
        "t = t if isinstance(t, int) else -1\n"
        "sys.stdout.buffer.write(('%d %d %s %d\\n' % (im.width, im.height, im.mode, t)).encode())\n"
        "sys.stdout.buffer.write(im.convert('RGBA').tobytes())\n");
    QByteArray out;
    if (!run(script, {fileName}, &out, error))
        return false;
    const int end = out.indexOf('\n');
    const QList<QByteArray> fields = out.left(end).split(' ');
    if (end < 0 || fields.size() != 4) {
        *error = QStringLiteral("python: no picture in its answer");
        return false;
    }
    const int width = fields.at(0).toInt();
    const int height = fields.at(1).toInt();
    const QByteArray bytes = out.mid(end + 1);
    if (bytes.size() != width * height * 4) {
        *error = QStringLiteral("python: %1 bytes for %2 x %3").arg(bytes.size()).arg(width).arg(height);
        return false;
    }
    picture->mode = QString::fromLatin1(fields.at(2));
    picture->transparency = fields.at(3).toInt();
    picture->pixels = QImage(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto *p = reinterpret_cast<const uchar *>(bytes.constData()) + (y * width + x) * 4;
            picture->pixels.setPixel(x, y, qRgba(p[0], p[1], p[2], p[3]));
        }
    }
    return true;
}

// Writes a picture that the Python statements make as `im`, saved with `saveArguments`
// (such as "transparency=3"); the format comes from the file's suffix.
inline bool write(const QString &fileName, const QString &statements, const QString &saveArguments, QString *error)
{
    const QString script = QStringLiteral("import sys\nfrom PIL import Image\n%1\nim.save(sys.argv[1]%2%3)\n")
                               .arg(statements, saveArguments.isEmpty() ? QString() : QStringLiteral(", "),
                                    saveArguments);
    return run(script, {fileName}, nullptr, error);
}

// Pixels that differ between two pictures seen as ARGB32: a pixel both call clear
// (alpha 0) is equal whatever its colour. -1 for pictures of different sizes.
inline int differences(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return -1;
    const QImage first = a.convertToFormat(QImage::Format_ARGB32);
    const QImage second = b.convertToFormat(QImage::Format_ARGB32);
    int count = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            const QRgb p = first.pixel(x, y);
            const QRgb q = second.pixel(x, y);
            if (qAlpha(p) != qAlpha(q) || (qAlpha(p) != 0 && p != q))
                ++count;
        }
    }
    return count;
}

} // namespace PilImages
