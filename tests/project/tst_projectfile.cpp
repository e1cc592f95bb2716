#include "foundation/archive.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"

#include "projecttestsupport.h"
#include "testinterface.h"

#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

// A file filed in a project whose parent counts the notifications. The file is
// handed over with a reference of its own, so that closing the project leaves it.
struct Filed
{
    MemoryArchive parentArchive;
    RecordingParent parent{QStringLiteral("/root/"), parentArchive};
    TestFile file;
    Project *project = new TestProject(&parent, 0, nullptr, false);

    Filed()
    {
        file.addRef();
        project->addFile(&file, Project::Sprites);
    }
    ~Filed() { project->release(); }
};

} // namespace

class ProjectFileTest : public QObject
{
    Q_OBJECT

private slots:
    void transfer_data();
    void transfer();
    void readOnlyAndExists_data();
    void readOnlyAndExists();
    void optionLayers_data();
    void optionLayers();
    void setOptionRouting_data();
    void setOptionRouting();
};

void ProjectFileTest::transfer_data()
{
    QTest::addColumn<bool>("save");
    QTest::addColumn<uint>("flags");
    QTest::addColumn<bool>("sameArchive");
    QTest::addColumn<bool>("filed");
    QTest::addColumn<bool>("rebinds");
    QTest::addColumn<int>("opened");
    QTest::addColumn<int>("saved");
    const uint foreign = ProjectFile::Foreign;
    QTest::newRow("load") << false << 0u << false << true << true << 1 << 0;
    QTest::newRow("load, same archive") << false << 0u << true << true << false << 1 << 0;
    // A backup is read without moving the file, yet the parent still hears of it.
    QTest::newRow("load foreign") << false << foreign << false << true << false << 1 << 0;
    QTest::newRow("load outside a project") << false << 0u << false << false << true << 0 << 0;
    QTest::newRow("save elsewhere") << true << 0u << false << true << true << 0 << 1;
    QTest::newRow("save in place") << true << 0u << true << true << false << 0 << 0;
    QTest::newRow("save foreign") << true << foreign << false << true << false << 0 << 0;
    QTest::newRow("save outside a project") << true << 0u << false << false << true << 0 << 0;
}

void ProjectFileTest::transfer()
{
    QFETCH(bool, save);
    QFETCH(uint, flags);
    QFETCH(bool, sameArchive);
    QFETCH(bool, filed);
    QFETCH(bool, rebinds);
    QFETCH(int, opened);
    QFETCH(int, saved);
    MemoryArchive first, second; // outlive the files bound to them
    Filed holder;
    TestFile loose;
    ProjectFile &file = filed ? static_cast<ProjectFile &>(holder.file) : loose;
    QVERIFY(!file.fromFile(first, QStringLiteral("a"), 0, nullptr));
    holder.parent.opened.clear();

    MemoryArchive &target = sameArchive ? first : second;
    const QString name = QStringLiteral("b");
    QVERIFY(!(save ? file.toFile(target, name, flags, nullptr) : file.fromFile(target, name, flags, nullptr)));
    QCOMPARE(&file.archive(), rebinds ? &second : &first);
    QCOMPARE(first.refCount(), rebinds ? 1u : 2u);
    QCOMPARE(second.refCount(), rebinds ? 2u : 1u);
    QCOMPARE(holder.parent.opened.size(), opened);
    QCOMPARE(holder.parent.saved.size(), saved);
}

void ProjectFileTest::readOnlyAndExists_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("locked");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("readOnly");
    QTest::newRow("writable, present") << "actors/hero.def" << false << true << false;
    QTest::newRow("writable, missing") << "actors/hero.def" << false << false << false;
    QTest::newRow("locked") << "actors/hero.def" << true << true << true;
    // Without a name nothing can be locked, whatever the archive says.
    QTest::newRow("no name") << QString() << true << false << false;
}

void ProjectFileTest::readOnlyAndExists()
{
    QFETCH(QString, name);
    QFETCH(bool, locked);
    QFETCH(bool, exists);
    QFETCH(bool, readOnly);
    MemoryArchive archive;
    TestFile file;
    file.name = name;
    if (locked)
        archive.locked << file.name;
    if (exists)
        archive.files.insert(file.name, QByteArray());
    file.fromFile(archive, file.name, 0, nullptr);
    QCOMPARE(file.isReadOnly(), readOnly);
    QCOMPARE(file.fileExists(), exists);
}

void ProjectFileTest::optionLayers_data()
{
    QTest::addColumn<bool>("withHost");
    QTest::addColumn<bool>("withProject");
    QTest::addColumn<QVariant>("own");
    QTest::addColumn<QVariant>("projectValue");
    QTest::addColumn<QVariant>("hostValue");
    QTest::addColumn<QVariant>("expected");
    const QVariant no, a(1), b(2), c(3);
    QTest::newRow("own value first") << true << true << a << b << c << a;
    QTest::newRow("then the project") << true << true << no << b << c << b;
    QTest::newRow("host through the project") << true << true << no << no << c << c;
    QTest::newRow("host without project") << true << false << no << no << c << c;
    QTest::newRow("own value, no host") << false << false << a << no << no << a;
    QTest::newRow("project, no host") << false << true << no << b << no << b;
    QTest::newRow("nothing anywhere") << true << true << no << no << no << no;
    QTest::newRow("no project, no host") << false << false << no << no << no << no;
    QTest::newRow("nothing, project without host") << false << true << no << no << no << no;
}

void ProjectFileTest::optionLayers()
{
    QFETCH(bool, withHost);
    QFETCH(bool, withProject);
    QFETCH(QVariant, own);
    QFETCH(QVariant, projectValue);
    QFETCH(QVariant, hostValue);
    QFETCH(QVariant, expected);
    const QString name = QStringLiteral("tabWidth");
    std::unique_ptr<TestInterface> host(withHost ? new TestInterface : nullptr);
    if (host && hostValue.isValid())
        host->options.insert(name, hostValue);
    Filed holder;
    TestFile loose;
    ProjectFile &file = withProject ? static_cast<ProjectFile &>(holder.file) : loose;
    holder.project->setOption(name, projectValue);
    file.setOption(name, own, false, false);

    QCOMPARE(file.option(name), expected);
    QCOMPARE(file.option(name, QStringLiteral("fallback")),
             expected.isValid() ? expected : QVariant(QStringLiteral("fallback")));
    const QVariant projectExpected = projectValue.isValid() ? projectValue : host ? hostValue : QVariant();
    QCOMPARE(holder.project->option(name), projectExpected);
    QCOMPARE(holder.project->option(name, 7), projectExpected.isValid() ? projectExpected : QVariant(7));
}

void ProjectFileTest::setOptionRouting_data()
{
    QTest::addColumn<bool>("withProject");
    QTest::addColumn<bool>("toProject");
    QTest::addColumn<bool>("toHost");
    QTest::newRow("own store") << true << false << false;
    QTest::newRow("to the project") << true << true << false;
    QTest::newRow("to project and host") << true << true << true;
    QTest::newRow("to the project, none there") << false << true << false;
}

void ProjectFileTest::setOptionRouting()
{
    QFETCH(bool, withProject);
    QFETCH(bool, toProject);
    QFETCH(bool, toHost);
    TestInterface host;
    const QString name = QStringLiteral("indent");
    Filed holder;
    TestFile loose;
    ProjectFile &file = withProject ? static_cast<ProjectFile &>(holder.file) : loose;
    file.setOption(name, 4, toProject, toHost);

    const bool forwarded = toProject && withProject;
    QCOMPARE(file.option(name), QVariant(4));
    QCOMPARE(holder.project->option(name), forwarded ? QVariant(4) : QVariant());
    QCOMPARE(host.options.value(name), forwarded && toHost ? QVariant(4) : QVariant());
    // Whatever went to the project was not kept by the file as well; a null value takes
    // the option away from the host too.
    holder.project->setOption(name, QVariant(), true);
    QVERIFY(!host.options.contains(name));
    QCOMPARE(file.option(name), forwarded ? QVariant() : QVariant(4));
    // A null value of its own lets the file fall through again.
    holder.project->setOption(name, 8);
    file.setOption(name, QVariant(), false, false);
    QCOMPARE(file.option(name), withProject ? QVariant(8) : QVariant());
}

QTEST_GUILESS_MAIN(ProjectFileTest)
#include "tst_projectfile.moc"
