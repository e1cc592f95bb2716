#include "engine/script/scriptimage.h"

#include "engine/script/usertype.h"
#include "image/imagecodecs.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

#include <stdexcept>

namespace Ovra {

namespace {

// Large enough for any sprite sheet, small enough that a typo can't ask for gigabytes.
constexpr int maximumSide = 16384;

[[noreturn]] void fail(const QString &message)
{
    throw std::runtime_error(message.toStdString());
}

QString sizeText(const QImage &image)
{
    return QStringLiteral("%1x%2").arg(image.width()).arg(image.height());
}

// Only the formats that sprites and the codecs use; others would need converting anyway.
QImage::Format checkedFormat(int format)
{
    switch (QImage::Format(format)) {
    case QImage::Format_Indexed8:
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return QImage::Format(format);
    default:
        fail(QStringLiteral("unsupported image format %1 (use Image.Format)").arg(format));
    }
}

void checkSize(int width, int height)
{
    if (width <= 0 || height <= 0 || width > maximumSide || height > maximumSide)
        fail(QStringLiteral("bad image size %1x%2").arg(width).arg(height));
}

void checkNotNull(const QImage &image)
{
    if (image.isNull())
        fail(QStringLiteral("the image is null"));
}

void checkPoint(const QImage &image, int x, int y)
{
    if (!image.valid(x, y))
        fail(QStringLiteral("pixel (%1, %2) outside the %3 image").arg(x).arg(y).arg(sizeText(image)));
}

void checkIndexed(const QImage &image)
{
    if (image.format() != QImage::Format_Indexed8)
        fail(QStringLiteral("not an indexed image"));
}

void checkColorIndex(const QImage &image, qint64 index)
{
    if (index < 0 || index >= image.colorCount())
        fail(QStringLiteral("colour index %1 outside the table of %2 colours").arg(index).arg(image.colorCount()));
}

// A value for a pixel or a fill: an index into the table of an indexed image, a 32-bit
// 0xAARRGGBB word otherwise.
uint checkedValue(const QImage &image, qint64 value)
{
    if (image.format() == QImage::Format_Indexed8)
        checkColorIndex(image, value);
    else if (value < 0 || value > 0xffffffffLL)
        fail(QStringLiteral("colour %1 is not a 32-bit 0xAARRGGBB value").arg(value));
    return uint(value);
}

QVector<QRgb> checkedTable(const QVector<qint64> &colors)
{
    if (colors.size() > 256)
        fail(QStringLiteral("a colour table holds at most 256 colours, not %1").arg(colors.size()));
    QVector<QRgb> table;
    table.reserve(colors.size());
    for (qint64 color : colors) {
        if (color < 0 || color > 0xffffffffLL)
            fail(QStringLiteral("colour %1 is not a 32-bit 0xAARRGGBB value").arg(color));
        table.append(QRgb(color));
    }
    return table;
}

QByteArray formatOfFile(const QString &fileName)
{
    QByteArray suffix = QFileInfo(fileName).suffix().toUpper().toLatin1();
    if (suffix.isEmpty())
        fail(QStringLiteral("%1: no suffix to tell the image format").arg(fileName));
    return suffix;
}

QImage loadFile(const QString &fileName)
{
    QByteArray format = formatOfFile(fileName);
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("cannot open %1: %2").arg(fileName, file.errorString()));
    QImage image;
    if (!loadImage(&file, format.constData(), image) || image.isNull())
        fail(QStringLiteral("%1: not a readable %2 image").arg(fileName, QString::fromLatin1(format)));
    return image;
}

// Written through a save file, so a failed write leaves what was there before.
void saveFile(const QImage &image, const QString &fileName)
{
    checkNotNull(image);
    QByteArray format = formatOfFile(fileName);
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        fail(QStringLiteral("cannot write %1: %2").arg(fileName, file.errorString()));
    if (!saveImage(&file, format.constData(), image)) {
        file.cancelWriting();
        fail(QStringLiteral("cannot save %1 as %2").arg(fileName, QString::fromLatin1(format)));
    }
    if (!file.commit())
        fail(QStringLiteral("cannot write %1: %2").arg(fileName, file.errorString()));
}

QImage makeImage(int width, int height, int format)
{
    QImage::Format checked = checkedFormat(format);
    checkSize(width, height);
    QImage image(width, height, checked);
    if (image.isNull())
        fail(QStringLiteral("not enough memory for a %1x%2 image").arg(width).arg(height));
    // A new indexed picture starts with a grey ramp, so every index has a colour.
    if (checked == QImage::Format_Indexed8) {
        QVector<QRgb> ramp(256);
        for (int i = 0; i < 256; ++i)
            ramp[i] = qRgb(i, i, i);
        image.setColorTable(ramp);
    }
    image.fill(0);
    return image;
}

QString formatName(QImage::Format format)
{
    switch (format) {
    case QImage::Format_Indexed8:
        return QStringLiteral("Indexed8");
    case QImage::Format_RGB32:
        return QStringLiteral("RGB32");
    case QImage::Format_ARGB32:
        return QStringLiteral("ARGB32");
    case QImage::Format_ARGB32_Premultiplied:
        return QStringLiteral("ARGB32_Premultiplied");
    default:
        return QString::number(int(format));
    }
}

void registerConstructors(lua_State *L, Script::Table &type)
{
    // Image() is null, Image(w, h) a transparent ARGB32 picture, Image(w, h, format) one
    // of that format, Image(other) a copy. The checks need code of their own, so the type
    // table's call is replaced rather than built from plain constructors.
    type.push();
    lua_getmetatable(L, -1);
    Script::Detail::pushFunction(L,
                                 Script::overload([] { return QImage(); },
                                                  [](int width, int height) {
                                                      return makeImage(width, height, QImage::Format_ARGB32);
                                                  },
                                                  [](int width, int height, int format) {
                                                      return makeImage(width, height, format);
                                                  },
                                                  [](const QImage &other) { return other; }),
                                 "Image", Script::Detail::CallKind::Constructor);
    lua_setfield(L, -2, "__call");
    lua_pop(L, 2);
}

// Pixels, read and written by point.
void addPixels(Script::Usertype<QImage> &image)
{
    image
        .function("pixel",
                  [](const QImage &self, int x, int y) -> qint64 {
                      checkPoint(self, x, y);
                      if (self.format() == QImage::Format_Indexed8)
                          return self.pixelIndex(x, y);
                      return self.pixel(x, y);
                  })
        .function("setPixel",
                  [](QImage &self, int x, int y, qint64 value) {
                      checkPoint(self, x, y);
                      self.setPixel(x, y, checkedValue(self, value));
                  })
        .function("pixelIndex",
                  [](const QImage &self, int x, int y) {
                      checkIndexed(self);
                      checkPoint(self, x, y);
                      return self.pixelIndex(x, y);
                  });
}

// The colour table of an indexed picture.
void addColors(Script::Usertype<QImage> &image)
{
    image
        .function("color",
                  [](const QImage &self, int index) -> qint64 {
                      checkColorIndex(self, index);
                      return self.color(index);
                  })
        .function("setColor",
                  [](QImage &self, int index, qint64 rgba) {
                      checkIndexed(self);
                      if (index < 0 || index > 255)
                          fail(QStringLiteral("colour index %1 outside 0 to 255").arg(index));
                      QRgb color = checkedTable({rgba}).constFirst();
                      // Setting past the end grows the table, as a palette editor would.
                      if (index >= self.colorCount())
                          self.setColorCount(index + 1);
                      self.setColor(index, color);
                  })
        .function("colorTable",
                  [](const QImage &self) {
                      QVector<qint64> colors;
                      const QVector<QRgb> table = self.colorTable();
                      for (QRgb color : table)
                          colors.append(color);
                      return colors;
                  })
        .function("setColorTable",
                  [](QImage &self, const QVector<qint64> &colors) {
                      checkIndexed(self);
                      self.setColorTable(checkedTable(colors));
                  });
}

// New pictures from a picture, and filling one.
void addCopies(Script::Usertype<QImage> &image)
{
    image
        .function("copy",
                  Script::overload([](const QImage &self) { return self.copy(); },
                                   [](const QImage &self, int x, int y, int width, int height) {
                                       QRect rect(x, y, width, height);
                                       if (width <= 0 || height <= 0 || !self.rect().contains(rect))
                                           fail(QStringLiteral("rectangle (%1, %2, %3, %4) outside the %5 image")
                                                    .arg(x)
                                                    .arg(y)
                                                    .arg(width)
                                                    .arg(height)
                                                    .arg(sizeText(self)));
                                       return self.copy(rect);
                                   }))
        .function("scaled",
                  [](const QImage &self, int width, int height) {
                      checkNotNull(self);
                      checkSize(width, height);
                      return self.scaled(width, height, Qt::IgnoreAspectRatio, Qt::FastTransformation);
                  })
        .function("convertToFormat",
                  [](const QImage &self, int format) {
                      QImage::Format target = checkedFormat(format);
                      checkNotNull(self);
                      return self.convertToFormat(target, Qt::ThresholdDither | Qt::AvoidDither);
                  })
        .function("fill",
                  [](QImage &self, qint64 value) {
                      checkNotNull(self);
                      self.fill(checkedValue(self, value));
                  });
}

// Files, comparison and the text a script prints.
void addFilesAndOperators(Script::Usertype<QImage> &image)
{
    image
        .function("save", [](const QImage &self, const QString &fileName) { saveFile(self, fileName); })
        .function("load", [](QImage &self, const QString &fileName) { self = loadFile(fileName); })
        .staticFunction("load", [](const QString &fileName) { return loadFile(fileName); })
        .metaFunction("__eq", [](const QImage &a, const QImage &b) { return a == b; })
        .metaFunction("__tostring", [](const QImage &self) {
            if (self.isNull())
                return QStringLiteral("Image(null)");
            return QStringLiteral("Image(%1, %2)").arg(sizeText(self), formatName(self.format()));
        });
}

} // namespace

void registerImageClass(Script::Table &table)
{
    auto image = table.usertype<QImage>("Image");
    image.enumeration("Format", {{"Invalid", QImage::Format_Invalid},
                                 {"Indexed8", QImage::Format_Indexed8},
                                 {"RGB32", QImage::Format_RGB32},
                                 {"ARGB32", QImage::Format_ARGB32},
                                 {"ARGB32_Premultiplied", QImage::Format_ARGB32_Premultiplied}})
        .property("width", &QImage::width)
        .property("height", &QImage::height)
        .property("size", &QImage::size)
        .property("format", [](const QImage &self) { return int(self.format()); })
        .property("isNull", &QImage::isNull)
        .property("colorCount", &QImage::colorCount);
    addPixels(image);
    addColors(image);
    addCopies(image);
    addFilesAndOperators(image);
    registerConstructors(table.luaState(), image.table());
}

} // namespace Ovra
