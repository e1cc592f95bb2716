#pragma once

// Checks drawn icons the way an eye would at a glance, and lays them out on a sheet that a
// person can look at: each at 16, 24 and 32 pixels, none blank, none a flat square, no two
// alike.
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QSet>
#include <QString>
#include <QtTest>

// Writes the sheet of the icons, a column each, to `file` beside the test program.
inline void checkIconSheet(const QList<QPair<QString, QIcon>> &icons, const QString &file)
{
    const QList<int> sides{16, 24, 32};
    QImage sheet(8 + icons.size() * 40, 8 + sides.size() * 40, QImage::Format_ARGB32);
    sheet.fill(QColor(239, 239, 239));
    QPainter painter(&sheet);
    QSet<QByteArray> seen;
    for (int i = 0; i < icons.size(); ++i) {
        const QIcon &icon = icons.at(i).second;
        const QByteArray name = icons.at(i).first.toUtf8();
        for (int row = 0; row < sides.size(); ++row) {
            const int side = sides.at(row);
            QCOMPARE(icon.actualSize(QSize(side, side)), QSize(side, side));
            const QImage picture = icon.pixmap(side, side).toImage().convertToFormat(QImage::Format_ARGB32);
            QSet<QRgb> values;
            int opaque = 0;
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    values.insert(picture.pixel(x, y));
                    opaque += qAlpha(picture.pixel(x, y)) > 128;
                }
            }
            QVERIFY2(values.size() > 2 && opaque > side * side / 16 && opaque < side * side * 9 / 10, name.constData());
            if (side == 24)
                seen.insert(QByteArray(reinterpret_cast<const char *>(picture.constBits()), int(picture.sizeInBytes())));
            painter.drawImage(8 + i * 40, 8 + row * 40, picture);
        }
    }
    QCOMPARE(seen.size(), icons.size());
    painter.end();
    QVERIFY(sheet.save(QCoreApplication::applicationDirPath() + QLatin1Char('/') + file));
}
