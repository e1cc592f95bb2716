#include <QtTest>
class ImageScalingTest : public QObject
{
    Q_OBJECT
};
QTEST_MAIN(ImageScalingTest)
#include "tst_imagescaling.moc"
