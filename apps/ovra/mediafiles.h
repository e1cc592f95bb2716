#pragma once

// What the media commands share: the formats the library and the loaded plug-ins read
// and write, told by a file's suffix; the checks that keep an output off its inputs; and
// writing an output through the library's safe replacement.
#include "cli.h"

#include <QIODevice>
#include <QImage>
#include <QStringList>

#include <functional>

namespace MediaFiles {

enum Kind { Image, Palette, Sound };
enum Direction { Read, Write };

// The format names ("PNG", "GPL") of a kind, the library's own first, then those of the
// plug-ins loaded so far. Call after the plug-ins are loaded.
QStringList formats(Kind kind, Direction direction);
// The format a file name means by its suffix, in capitals; empty without a suffix.
QByteArray formatOfName(const QString &fileName);
// The format of the file for that kind and direction, or a usage error said (the
// formats there are listed) and an empty answer.
QByteArray checkedFormat(Cli::Context &context, const QString &command, const QString &fileName, Kind kind,
                         Direction direction);

// Why a picture can't go to that format whole (a PCX file holds no transparency), or
// empty when it can.
QString pictureRefusal(const QByteArray &format, const QImage &image);

// A count with its noun in the singular or the plural: "1 sprite", "3 sprites".
QString counted(int count, const QString &one, const QString &many);

// Whether two names are one file on disk (the second need not exist).
bool sameFile(const QString &a, const QString &b);
// An input that is there and can be read: else the input error is said and false.
bool checkInput(Cli::Context &context, const QString &command, const QString &fileName);
// Refuses an output that would replace one of the inputs (a usage error), unless the
// user allowed it with --in-place. Returns -1 to go on, else the exit code.
int checkOutput(Cli::Context &context, const QString &command, const QString &output, const QStringList &inputs,
                bool inPlace);

// Reads a whole input file for a library reader; false with the reason.
bool openInput(QIODevice &device, QString *error);

// Writes `output` through Ovra::File: `write` gets the open device and answers whether
// everything went in. On any failure the old file stays as it was (a new one goes) and
// the input error is said. Returns the exit code.
int writeOutput(Cli::Context &context, const QString &command, const QString &output,
                const std::function<bool(QIODevice *device)> &write, const QString &what);

} // namespace MediaFiles
