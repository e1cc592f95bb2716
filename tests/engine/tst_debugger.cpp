// The shape of debuggers and emulators: the reports an engine makes through the protected
// helpers, observed values, and the tree of values a debugger shows.
#include "engine/debugger.h"
#include "engine/variable.h"
#include "engine/variablesmodel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;

namespace {

// An emulator that reports through the protected helpers as it is told to.
class ScriptedEmulator : public Emulator
{
public:
    void stepOver() override { debugBreak(true); }
    void stepInto() override { debugOutput(QStringLiteral("into")); }
    void stepOut() override { debugException(QStringLiteral("out of frames")); }
    void stepFrame() override {}
    void stop() override
    {
        debugBreak(false);
        emit finished();
    }
    Variable *variable(const QString &) override { return nullptr; }
    bool frameEnded() const override { return false; }
    bool canRun(int) const override { return true; }
    bool start(const Project *) override { return true; }
};

} // namespace

class DebuggerTest : public QObject
{
    Q_OBJECT

private slots:
    void reportsBecomeSignals();
    void variableTellsChanges_data();
    void variableTellsChanges();
    void modelShowsScopesThenWatches();
    void modelFollowsValues();
    void watchesGoWithTheirVariables();
    void clearEndsScopes();
    void membersLeaveTheirOwner();
};

void DebuggerTest::reportsBecomeSignals()
{
    ScriptedEmulator emulator;
    QSignalSpy interrupted(&emulator, &BasicDebugger::interrupted);
    QSignalSpy output(&emulator, &BasicDebugger::outputString);
    QSignalSpy exception(&emulator, &BasicDebugger::exception);
    QSignalSpy finished(&emulator, &BasicDebugger::finished);

    emulator.stepOver();
    emulator.stepInto();
    emulator.stepOut();
    emulator.stop();
    QCOMPARE(interrupted.size(), 2);
    QCOMPARE(interrupted.at(0).at(0).toBool(), true);
    QCOMPARE(interrupted.at(1).at(0).toBool(), false);
    QCOMPARE(output.size(), 1);
    QCOMPARE(output.at(0).at(0).toString(), QStringLiteral("into"));
    QCOMPARE(exception.at(0).at(0).toString(), QStringLiteral("out of frames"));
    QCOMPARE(finished.size(), 1);
}

void DebuggerTest::variableTellsChanges_data()
{
    QTest::addColumn<QVariant>("before");
    QTest::addColumn<QVariant>("after");
    QTest::addColumn<int>("told");
    QTest::newRow("same value") << QVariant(3) << QVariant(3) << 0;
    QTest::newRow("another value") << QVariant(3) << QVariant(4) << 1;
    QTest::newRow("same number, another type") << QVariant(1) << QVariant(1.0) << 1;
    QTest::newRow("from nothing") << QVariant() << QVariant(QStringLiteral("x")) << 1;
    QTest::newRow("to nothing") << QVariant(QStringLiteral("x")) << QVariant() << 1;
}

void DebuggerTest::variableTellsChanges()
{
    QFETCH(QVariant, before);
    QFETCH(QVariant, after);
    QFETCH(int, told);
    Variable variable(QStringLiteral("v"), before);
    QSignalSpy changed(&variable, &Variable::valueChanged);
    variable.setValue(after);
    QCOMPARE(changed.size(), told);
    QCOMPARE(variable.value(), after);
}

void DebuggerTest::modelShowsScopesThenWatches()
{
    VariablesModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 2);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("Name"));
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Value"));

    Variable *locals = model.addScope(QStringLiteral("Locals"));
    Variable *player = model.addVariable(locals, QStringLiteral("player"), QStringLiteral("knight"));
    model.addVariable(player, QStringLiteral("x"), 12);
    model.addVariable(player, QStringLiteral("y"), -3);
    Variable *globals = model.addScope(QStringLiteral("Globals"));
    model.addVariable(globals, QStringLiteral("round"), 2);
    Variable watched(QStringLiteral("timer"), 99);
    model.addWatch(&watched);
    model.addWatch(&watched);          // once only
    model.addWatch(player);            // the model's own: already in its scope
    QCOMPARE(model.rowCount(), 3);

    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("Locals"));
    QCOMPARE(model.index(1, 0).data().toString(), QStringLiteral("Globals"));
    QCOMPARE(model.index(2, 0).data().toString(), QStringLiteral("timer"));
    QCOMPARE(model.index(2, 1).data().toString(), QStringLiteral("99"));
    const QModelIndex playerIndex = model.index(0, 0, model.index(0, 0));
    QCOMPARE(model.variable(playerIndex), player);
    QCOMPARE(model.rowCount(playerIndex), 2);
    const QModelIndex y = model.index(1, 1, playerIndex);
    QCOMPARE(y.data().toString(), QStringLiteral("-3"));
    QCOMPARE(y.parent(), playerIndex.siblingAtColumn(0));
    QCOMPARE(model.indexOf(player->members().at(1), 1), y);
}

void DebuggerTest::modelFollowsValues()
{
    VariablesModel model;
    Variable *scope = model.addScope(QStringLiteral("Locals"));
    Variable *life = model.addVariable(scope, QStringLiteral("life"), 1000);
    Variable watched(QStringLiteral("timer"), 99);
    model.addWatch(&watched);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    life->setValue(900);
    watched.setValue(98);
    life->setValue(900); // no change: no signal
    QCOMPARE(changed.size(), 2);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), model.indexOf(life, VariablesModel::ValueColumn));
    QCOMPARE(changed.at(1).at(0).toModelIndex(), model.index(1, 1));
    QCOMPARE(model.index(1, 1).data().toString(), QStringLiteral("98"));
}

void DebuggerTest::watchesGoWithTheirVariables()
{
    VariablesModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.addScope(QStringLiteral("Locals"));
    auto *first = new Variable(QStringLiteral("a"), 1);
    Variable second(QStringLiteral("b"), 2);
    model.addWatch(first);
    model.addWatch(&second);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    delete first;
    QCOMPARE(removed.size(), 1);
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.index(1, 0).data().toString(), QStringLiteral("b"));
    model.removeWatch(&second);
    QCOMPARE(model.rowCount(), 1);
    second.setValue(5); // no longer followed: nothing may reach the model
}

void DebuggerTest::clearEndsScopes()
{
    VariablesModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Variable *scope = model.addScope(QStringLiteral("Locals"));
    QPointer<Variable> member = model.addVariable(scope, QStringLiteral("x"), 1);
    Variable watched(QStringLiteral("w"), 0);
    model.addWatch(&watched);
    model.clear();
    QCOMPARE(model.rowCount(), 0);
    QVERIFY(member.isNull());          // the model's own variables end with it
    QCOMPARE(watched.value(), QVariant(0)); // a watch stays its owner's
    QVERIFY(!model.addVariable(nullptr, QStringLiteral("y"), 2));
}

void DebuggerTest::membersLeaveTheirOwner()
{
    auto *owner = new Variable(QStringLiteral("player"));
    auto *x = new Variable(QStringLiteral("x"), 1, owner);
    QPointer<Variable> y = new Variable(QStringLiteral("y"), 2, owner);
    QSignalSpy ending(x, &Variable::ending);
    delete x;
    QCOMPARE(ending.size(), 1);
    QCOMPARE(owner->members().size(), 1);
    QCOMPARE(owner->members().first()->name(), QStringLiteral("y"));
    delete owner; // its last member ends with it, without reaching back
    QVERIFY(y.isNull());
}

QTEST_GUILESS_MAIN(DebuggerTest)
#include "tst_debugger.moc"
