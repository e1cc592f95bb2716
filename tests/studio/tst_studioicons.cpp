// The studio's icons as the program finds them: every name the window and the host ask
// for is drawn at both sizes and comes from the studio's own resources, each picture a
// shape on a transparent ground, and the program icon is there at all three sizes.
#include "studiohost.h"

#include <QFile>
#include <QIcon>
#include <QImage>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

class StudioIconsTest : public QObject
{
    Q_OBJECT

private slots:
    void drawnAtBothSizes_data();
    void drawnAtBothSizes();
    void theHostOffersBothSizes();
    void programIcon_data();
    void programIcon();
};

namespace {

const char *const kNames[] = {
    "file_open", "file_save", "file_save_all", "file_save_as", "file_backup",
    "file_restore", "file_close", "file_quit", "edit_undo", "edit_redo", "edit_cut",
    "edit_copy", "edit_paste", "edit_find", "tools_run_script", "tools_options",
    "help_about", "editor_project", "editor_code", "editor_anim", "editor_script",
    "view_code_bar", "code_snippet_insert", "code_snippet_new", "code_snippet_edit",
    "code_goto", "code_prev_error", "code_next_error", "code_prev_deprecation",
    "code_next_deprecation", "code_comment", "code_fold_all", "code_unfold_all",
    "code_auto_indent", "code_auto_format", "icon_folder", "icon_code", "icon_sprite",
    "icon_sound", "icon_animation", "icon_file", "code_string", "code_bool", "code_file",
    "code_date", "code_keyword", "code_float", "code_int", "warning", "information",
    "error",
};

// Share of pixels that are fully transparent and of those that are nearly opaque.
QPair<double, double> coverage(const QImage &image)
{
    int clear = 0;
    int solid = 0;
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y)
        for (int x = 0; x < argb.width(); ++x) {
            const int alpha = qAlpha(argb.pixel(x, y));
            clear += alpha == 0;
            solid += alpha >= 0xf0;
        }
    const double all = argb.width() * argb.height();
    return {clear / all, solid / all};
}

} // namespace

void StudioIconsTest::drawnAtBothSizes_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("size");
    for (const char *name : kNames)
        for (int size : {16, 32})
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(QLatin1String(name)).arg(size)))
                << QStringLiteral(":/studio/icons/%1/%2.png").arg(size).arg(QLatin1String(name))
                << size;
}

void StudioIconsTest::drawnAtBothSizes()
{
    QFETCH(QString, file);
    QFETCH(int, size);
    QVERIFY2(QFile::exists(file), qPrintable(file));
    const QImage image(file);
    QCOMPARE(image.size(), QSize(size, size));
    QVERIFY(image.hasAlphaChannel());
    // Not an empty square nor a filled one: some ground shows, and a good part is drawn.
    const auto [clear, solid] = coverage(image);
    QVERIFY2(clear > 0.05, qPrintable(QString::number(clear)));
    QVERIFY2(solid > 0.08, qPrintable(QString::number(solid)));
}

void StudioIconsTest::theHostOffersBothSizes()
{
    QTemporaryDir dir;
    QSettings settings(dir.filePath(QStringLiteral("studio.ini")), QSettings::IniFormat);
    StudioHost host(&settings);
    // "error" is also among the library's icons, which have a single 16 pixel size: the
    // studio's own pair must win.
    for (const char *name : {"error", "file_open", "code_int"}) {
        const QList<QSize> sizes = host.icon(QLatin1String(name)).availableSizes();
        QVERIFY2(sizes.contains(QSize(16, 16)) && sizes.contains(QSize(32, 32)), name);
    }
}

void StudioIconsTest::programIcon_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("size");
    QTest::newRow("16") << QStringLiteral(":/studio/icons/16/ovra-studio.png") << 16;
    QTest::newRow("32") << QStringLiteral(":/studio/icons/32/ovra-studio.png") << 32;
    QTest::newRow("256") << QStringLiteral(":/studio/icons/ovra-studio.png") << 256;
}

void StudioIconsTest::programIcon()
{
    QFETCH(QString, file);
    QFETCH(int, size);
    const QImage image(file);
    QCOMPARE(image.size(), QSize(size, size));
    // A rounded tile: the very corner is (nearly) clear, the middle is solid.
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    QVERIFY2(qAlpha(argb.pixel(0, 0)) < 0x40, qPrintable(QString::number(qAlpha(argb.pixel(0, 0)))));
    QCOMPARE(qAlpha(argb.pixel(size / 2, size / 2)), 0xff);
}

QTEST_MAIN(StudioIconsTest)

#include "tst_studioicons.moc"
