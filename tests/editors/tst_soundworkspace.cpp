// The sound workspace as a person uses it: selections, the sample commands and their
// history, the mouse tools on the real widget, playback on the audio library's null
// output, and a screenshot.
#include "testinterface.h"
#include "testsounds.h"

#include "cache/streamcache.h"
#include "editors/sound/audiodata.h"
#include "editors/sound/audiosamplewidget.h"
#include "editors/sound/audiotool.h"
#include "editors/sound/audiowaveform.h"
#include "editors/sound/samplechange.h"
#include "editors/sound/soundworkspace.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <vector>

using namespace Ovra;

namespace {

// Mono 16-bit, the value of frame i being i: every frame can be told where it came from.
SoundSample rampSample(quint32 frames)
{
    SoundSample sample;
    sample.channels = 1;
    sample.bits = 16;
    sample.frequency = 8000;
    sample.samples = frames;
    sample.data.resize(int(frames * 2));
    auto *values = reinterpret_cast<qint16 *>(sample.data.data());
    for (quint32 i = 0; i < frames; ++i)
        values[i] = qint16(i);
    return sample;
}

qint16 valueAt(const SoundSample &sample, uint frame)
{
    return reinterpret_cast<const qint16 *>(sample.data.constData())[frame];
}

QByteArray ramp(int from, int count)
{
    return rampSample(quint32(from + count)).data.mid(from * 2);
}

} // namespace

class SoundWorkspaceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void selectKeepsOrder_data();
    void selectKeepsOrder();
    void sampleChangeIsASwap();
    void changeRoads_data();
    void changeRoads();
    void commandsParkOnlyTheChangedRange();
    void randomEditsAgainstModel();
    void editedAndModified();
    void toolTable();
    void selectionToolByMouse();
    void moveToolScrolls();
    void zoomToolZoomsOnTheDrag();
    void selectionMoveTool();
    void hResizeTool_data();
    void hResizeTool();
    void vResizeToolDoublesAtHalfHeight();
    void zoomSteps();
    void playPauseStop();
    void loopWrapsTheCursor();
    void screenshot();

private:
    void showWith(const SoundSample &sample);
    TestInterface m_host;
    std::unique_ptr<SoundWorkspace> m_ws;
    AudioSampleWidget *m_widget = nullptr;
};

void SoundWorkspaceTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(qgetenv("ALSOFT_DRIVERS") == "null");
}

void SoundWorkspaceTest::init()
{
    m_ws.reset(new SoundWorkspace(&m_host));
    m_ws->resize(420, 220);
    m_widget = m_ws->sampleWidget();
}

void SoundWorkspaceTest::cleanup()
{
    m_ws.reset();
}

void SoundWorkspaceTest::showWith(const SoundSample &sample)
{
    m_ws->setSound(sample);
    m_ws->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_ws.get()));
    m_ws->zoomActual();
    m_widget->waveform()->setFirstFrame(0);
}

void SoundWorkspaceTest::selectKeepsOrder_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<uint>("start");
    QTest::addColumn<uint>("end");
    QTest::addColumn<uint>("storedStart");
    QTest::addColumn<uint>("storedEnd");
    QTest::newRow("backwards") << 100 << 10u << 5u << 10u << 5u;
    QTest::newRow("forwards") << 100 << 5u << 10u << 5u << 10u;
    QTest::newRow("past the end") << 100 << 0u << 200u << 0u << 100u;
    QTest::newRow("past the end backwards") << 100 << 200u << 150u << 100u << 99u;
    QTest::newRow("empty at the end") << 100 << 100u << 100u << 99u << 100u;
    QTest::newRow("no frames") << 0 << 3u << 7u << 0u << 0u;
}

void SoundWorkspaceTest::selectKeepsOrder()
{
    QFETCH(int, frames);
    QFETCH(uint, start);
    QFETCH(uint, end);
    QFETCH(uint, storedStart);
    QFETCH(uint, storedEnd);
    m_ws->setSound(rampSample(quint32(frames)));
    QSignalSpy spy(m_ws.get(), &SoundWorkspace::selectionChanged);
    m_ws->select(start, end);
    QCOMPARE(m_ws->selectionStart(), storedStart);
    QCOMPARE(m_ws->selectionEnd(), storedEnd);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toUInt(), storedStart);
    QCOMPARE(spy.at(0).at(1).toUInt(), storedEnd);
    uint a = 99, b = 99;
    m_ws->selection(a, b);
    QCOMPARE(a, std::min(storedStart, storedEnd));
    QCOMPARE(b, std::max(storedStart, storedEnd));
    QCOMPARE(m_ws->selectedSamples(), m_ws->sound().data.mid(int(a * 2), int((b - a) * 2)));
}

void SoundWorkspaceTest::sampleChangeIsASwap()
{
    AudioData data;
    data.setSample(rampSample(100));
    const QByteArray original = data.sample.data;
    SampleChange change(&data, 20, QByteArray(10, char(0x55)));
    change.redo();
    const QByteArray edited = data.sample.data;
    QCOMPARE(edited.mid(20, 10), QByteArray(10, char(0x55)));
    change.undo();
    QCOMPARE(data.sample.data, original);
    change.undo(); // the same swap again: the edit is back
    QCOMPARE(data.sample.data, edited);
    change.redo();
    QCOMPARE(data.sample.data, original);
}

void SoundWorkspaceTest::changeRoads_data()
{
    QTest::addColumn<uint>("start");
    QTest::addColumn<uint>("end");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("children"); // of the pushed step: 2 for the macro
    QTest::addColumn<QString>("text");
    QTest::newRow("removal") << 10u << 30u << QByteArray() << true << 80 << 0 << QStringLiteral("Remove samples");
    QTest::newRow("in place") << 30u << 10u << ramp(500, 20) << true << 100 << 0 << QStringLiteral("Change samples");
    QTest::newRow("other length") << 10u << 30u << ramp(500, 5) << true << 85 << 2 << QStringLiteral("Change samples");
    QTest::newRow("insert") << 40u << 40u << ramp(500, 7) << true << 107 << 0 << QStringLiteral("Insert samples");
    QTest::newRow("half a frame") << 10u << 30u << QByteArray(5, 'x') << false << 100 << -1 << QString();
    QTest::newRow("nothing into nothing") << 40u << 40u << QByteArray() << false << 100 << -1 << QString();
}

void SoundWorkspaceTest::changeRoads()
{
    QFETCH(uint, start);
    QFETCH(uint, end);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, accepted);
    QFETCH(int, frames);
    QFETCH(int, children);
    QFETCH(QString, text);
    m_ws->setSound(rampSample(100));
    const QByteArray original = m_ws->sound().data;
    m_ws->select(start, end);
    QSignalSpy changed(m_ws.get(), &SoundWorkspace::sampleChanged);
    QCOMPARE(m_ws->changeSelectedSamples(bytes), accepted);
    QCOMPARE(int(m_ws->sound().samples), frames);
    QCOMPARE(m_ws->sound().data.size(), frames * 2);
    const QUndoStack &stack = m_ws->audioData()->undoStack;
    QCOMPARE(stack.count(), accepted ? 1 : 0);
    if (!accepted) {
        QCOMPARE(changed.count(), 0);
        QCOMPARE(m_ws->sound().data, original);
        return;
    }
    QVERIFY(changed.count() >= 1);
    QCOMPARE(changed.last().at(0).value<SampleInfo>().samples, quint32(frames));
    QCOMPARE(stack.command(0)->childCount(), children);
    QCOMPARE(stack.text(0), text);
    const uint a = std::min(start, end);
    QCOMPARE(m_ws->sound().data.mid(int(a * 2), bytes.size()), bytes);
    QCOMPARE(m_ws->sound().data.left(int(a * 2)), original.left(int(a * 2)));
    m_ws->undo();
    QCOMPARE(m_ws->sound().data, original);
    QCOMPARE(m_ws->sound().samples, 100u);
    m_ws->redo();
    QCOMPARE(int(m_ws->sound().samples), frames);
}

void SoundWorkspaceTest::commandsParkOnlyTheChangedRange()
{
    AudioData data;
    data.setSample(rampSample(50000));
    auto parked = [&data] {
        qint64 total = 0;
        for (StreamCache::Item *item : data.cache->items())
            total += item->size();
        return total;
    };
    data.select(1000, 1010);
    QVERIFY(data.changeSelectedSamples(ramp(7, 10)));
    QCOMPARE(parked(), 20);
    data.select(2000, 2100);
    QVERIFY(data.changeSelectedSamples(QByteArray()));
    QCOMPARE(parked(), 20 + 200);
    data.select(5, 5);
    QVERIFY(data.changeSelectedSamples(ramp(0, 3)));
    QCOMPARE(parked(), 20 + 200 + 6);
    QCOMPARE(data.cache->items().size(), 3);
    data.undoStack.clear(); // each command gives its item back
    QCOMPARE(data.cache->items().size(), 0);
}

void SoundWorkspaceTest::randomEditsAgainstModel()
{
    QRandomGenerator random(20240611);
    m_ws->setSound(rampSample(3000));
    std::vector<QByteArray> states{m_ws->sound().data};
    const QUndoStack &stack = m_ws->audioData()->undoStack;
    for (int step = 0; step < 300; ++step) {
        const int action = int(random.bounded(10));
        if (action < 2 && stack.canUndo()) {
            m_ws->undo();
        } else if (action < 3 && stack.canRedo()) {
            m_ws->redo();
        } else {
            const uint n = m_ws->sound().samples;
            const uint a = n ? random.bounded(n) : 0;
            const uint b = std::min(n, a + random.bounded(200u));
            m_ws->select(random.bounded(2) ? a : b, random.bounded(2) ? b : a);
            uint s, e;
            m_ws->selection(s, e);
            const int kind = int(random.bounded(3));
            int count = kind == 0 ? int(e - s) : kind == 1 ? 0 : 1 + int(random.bounded(150u));
            if (count == 0 && s == e)
                count = 1;
            const QByteArray bytes = ramp(int(random.bounded(20000u)), count);
            QByteArray model = states[size_t(stack.index())];
            model.replace(int(s * 2), int((e - s) * 2), bytes);
            QVERIFY(m_ws->changeSelectedSamples(bytes));
            states.resize(size_t(stack.index()));
            states.push_back(model);
        }
        QCOMPARE(m_ws->sound().data, states[size_t(stack.index())]);
        QCOMPARE(m_ws->sound().samples, quint32(m_ws->sound().data.size() / 2));
        QVERIFY(m_ws->selectionStart() <= m_ws->sound().samples);
        QVERIFY(m_ws->selectionEnd() <= m_ws->sound().samples);
    }
    while (stack.canUndo())
        m_ws->undo();
    QCOMPARE(m_ws->sound().data, states.front());
}

void SoundWorkspaceTest::editedAndModified()
{
    m_ws->setSound(rampSample(100));
    QVERIFY(!m_ws->isEdited());
    QVERIFY(!m_ws->isModified());
    m_ws->select(0, 10);
    QVERIFY(m_ws->changeSelectedSamples(QByteArray()));
    QVERIFY(m_ws->isEdited());
    QVERIFY(m_ws->isModified());
    m_ws->undo();
    QVERIFY(!m_ws->isEdited());
    QVERIFY(m_ws->isModified()); // the bytes changed twice since the last reset
    m_ws->resetModification();
    QVERIFY(!m_ws->isModified());
    m_ws->redo();
    QVERIFY(m_ws->isEdited());
    m_ws->setSound(rampSample(10));
    QVERIFY(!m_ws->isEdited());
    QCOMPARE(m_ws->audioData()->undoStack.count(), 0);
    QCOMPARE(m_ws->selectionStart(), 0u);
    QCOMPARE(m_ws->selectionEnd(), 0u);
}

void SoundWorkspaceTest::toolTable()
{
    QVERIFY(qobject_cast<MoveTool *>(m_widget->tool(1)));
    QVERIFY(qobject_cast<ZoomTool *>(m_widget->tool(2)));
    QVERIFY(qobject_cast<SelectionTool *>(m_widget->tool(3)));
    QVERIFY(!qobject_cast<ZoomTool *>(m_widget->tool(3)));
    QVERIFY(qobject_cast<SelectionMoveTool *>(m_widget->tool(4)));
    QVERIFY(qobject_cast<HResizeTool *>(m_widget->tool(5)));
    QVERIFY(qobject_cast<VResizeTool *>(m_widget->tool(6)));
    QVERIFY(!m_widget->tool(7));
    QVERIFY(!m_widget->tool(0));
    QVERIFY(!m_widget->tool(8));
    QSignalSpy spy(m_ws.get(), &SoundWorkspace::toolChanged);
    m_ws->setCurrentTool(7);
    m_ws->setCurrentTool(7);
    m_ws->setCurrentTool(0);
    m_ws->setCurrentTool(1);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).toInt(), 7);
    QCOMPARE(m_ws->currentTool(), 1);
    // The empty slot takes clicks without doing anything.
    showWith(rampSample(400));
    m_ws->setCurrentTool(7);
    QTest::mouseClick(m_widget, Qt::LeftButton, {}, QPoint(30, 30));
    QCOMPARE(m_ws->selectionStart(), 0u);
}

void SoundWorkspaceTest::selectionToolByMouse()
{
    showWith(rampSample(1000));
    m_ws->setCurrentTool(3);
    QSignalSpy spy(m_ws.get(), &SoundWorkspace::selectionChanged);
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(150, 50));
    QTest::mouseMove(m_widget, QPoint(90, 60));
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(50, 60));
    QCOMPARE(m_ws->selectionStart(), 150u);
    QCOMPARE(m_ws->selectionEnd(), 50u);
    QVERIFY(spy.count() >= 2);
    QCOMPARE(spy.first().at(1).toUInt(), 150u); // the press set both ends
    QTRY_COMPARE(m_widget->cursor().shape(), Qt::IBeamCursor);
}

void SoundWorkspaceTest::moveToolScrolls()
{
    showWith(rampSample(5000));
    m_ws->setCurrentTool(1);
    m_widget->waveform()->setHScale(0.5);
    m_widget->waveform()->setFirstFrame(200);
    QTest::mouseMove(m_widget, QPoint(100, 50));
    QTRY_COMPARE(m_widget->cursor().shape(), Qt::OpenHandCursor);
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(100, 50));
    QTest::mouseMove(m_widget, QPoint(70, 50));
    QTRY_COMPARE(m_widget->cursor().shape(), Qt::ClosedHandCursor);
    QTRY_COMPARE(m_widget->waveform()->firstFrame(), 260u);
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(300, 50));
    QCOMPARE(m_widget->waveform()->firstFrame(), 0u); // not before the first frame
}

void SoundWorkspaceTest::zoomToolZoomsOnTheDrag()
{
    showWith(rampSample(5000));
    m_ws->select(5, 8);
    m_ws->setCurrentTool(2);
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(100, 50));
    QTest::mouseMove(m_widget, QPoint(150, 50));
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(200, 50));
    QCOMPARE(m_widget->waveform()->firstFrame(), 100u);
    QCOMPARE(m_widget->waveform()->hScale(), m_widget->width() / 100.0);
    QCOMPARE(m_ws->selectionStart(), 5u);
    QCOMPARE(m_ws->selectionEnd(), 8u);
}

void SoundWorkspaceTest::selectionMoveTool()
{
    showWith(rampSample(300));
    const QByteArray original = m_ws->sound().data;
    m_ws->select(10, 20);
    m_ws->setCurrentTool(4);
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(15, 50));
    QTest::mouseMove(m_widget, QPoint(30, 50));
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(45, 50));
    QCOMPARE(m_ws->sound().samples, 300u);
    QCOMPARE(m_ws->selectionStart(), 40u);
    QCOMPARE(m_ws->selectionEnd(), 50u);
    for (uint i = 0; i < 10; ++i)
        QCOMPARE(valueAt(m_ws->sound(), 40 + i), qint16(10 + i));
    QCOMPARE(valueAt(m_ws->sound(), 10), qint16(20));
    QCOMPARE(m_ws->audioData()->undoStack.count(), 1); // one step
    m_ws->undo();
    QCOMPARE(m_ws->sound().data, original);
    // A release where the block stood changes nothing.
    m_ws->select(10, 20);
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(15, 50));
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(15, 50));
    QCOMPARE(m_ws->sound().data, original);
    QCOMPARE(m_ws->audioData()->undoStack.index(), 0);
}

void SoundWorkspaceTest::hResizeTool_data()
{
    QTest::addColumn<int>("pressX");
    QTest::addColumn<int>("releaseX");
    QTest::addColumn<uint>("frames");
    QTest::addColumn<uint>("selectionEnd");
    QTest::newRow("release at the left edge removes it") << 300 << 100 << 800u << 100u;
    QTest::newRow("past the left edge removes it too") << 300 << 20 << 800u << 100u;
    QTest::newRow("stretch") << 300 << 350 << 1050u << 350u;
    QTest::newRow("squeeze") << 200 << 150 << 950u << 250u;
}

void SoundWorkspaceTest::hResizeTool()
{
    QFETCH(int, pressX);
    QFETCH(int, releaseX);
    QFETCH(uint, frames);
    QFETCH(uint, selectionEnd);
    showWith(sineSample(8000, 1, 16, 1000, 200, 0.5));
    const QByteArray original = m_ws->sound().data;
    m_ws->select(100, 300);
    m_ws->setCurrentTool(5);
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(pressX, 50));
    QTest::mouseMove(m_widget, QPoint((pressX + releaseX) / 2, 50));
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(releaseX, 50));
    QCOMPARE(m_ws->sound().samples, frames);
    QCOMPARE(m_ws->selectionStart(), 100u);
    QCOMPARE(m_ws->selectionEnd(), selectionEnd);
    QCOMPARE(m_ws->sound().data.left(200), original.left(200));
    QCOMPARE(m_ws->sound().data.right(700 * 2), original.right(700 * 2));
    m_ws->undo();
    QCOMPARE(m_ws->sound().data, original);
}

void SoundWorkspaceTest::vResizeToolDoublesAtHalfHeight()
{
    showWith(rampSample(400));
    m_ws->select(10, 20);
    m_ws->setCurrentTool(6);
    const int half = m_widget->height() / 2;
    QTest::mousePress(m_widget, Qt::LeftButton, {}, QPoint(15, half + 10));
    QTest::mouseRelease(m_widget, Qt::LeftButton, {}, QPoint(15, 10));
    for (uint i = 0; i < 400; ++i)
        QCOMPARE(valueAt(m_ws->sound(), i), qint16(i >= 10 && i < 20 ? 2 * i : i));
    QTest::mouseMove(m_widget, QPoint(20, 20));
    QTRY_COMPARE(m_widget->cursor().shape(), Qt::SizeVerCursor);
}

void SoundWorkspaceTest::zoomSteps()
{
    showWith(rampSample(20000));
    AudioWaveform *waveform = m_widget->waveform();
    m_ws->zoomIn();
    QCOMPARE(waveform->hScale(), 2.0);
    m_ws->zoomOut();
    m_ws->zoomOut();
    QCOMPARE(waveform->hScale(), 0.5);
    m_ws->zoomFit();
    QCOMPARE(waveform->hScale(), m_widget->width() / 20000.0);
    QCOMPARE(waveform->firstFrame(), 0u);
    for (int i = 0; i < 40; ++i)
        m_ws->zoomOut();
    QVERIFY(waveform->hScale() > 0);
    QVERIFY(waveform->frameAt(m_widget->width() / 10) >= 19000u); // not beyond a tenth of the view
    m_ws->zoomActual();
    QCOMPARE(waveform->hScale(), 1.0);
    QCOMPARE(waveform->vScale(), 1.0);
}

void SoundWorkspaceTest::playPauseStop()
{
    m_ws->setSound(sineSample(8000, 1, 16, 4000, 440, 0.3)); // half a second
    QSignalSpy states(m_ws.get(), &SoundWorkspace::stateChanged);
    QSignalSpy cursor(m_ws.get(), &SoundWorkspace::currentSampleChanged);
    QCOMPARE(m_widget->cursorInterval(), 10);
    m_ws->setVolume(250);
    QCOMPARE(m_ws->volume(), 100.0);
    m_ws->setVolume(40);
    m_ws->select(1000, 3000);
    m_ws->play(false);
    QCOMPARE(m_ws->currentState(), SoundSample::Playing);
    QCOMPARE(states.last().at(0).value<SoundSample::State>(), SoundSample::Playing);
    QTRY_VERIFY(m_ws->currentSample() > 1000);
    m_ws->pause();
    QCOMPARE(m_ws->currentState(), SoundSample::Paused);
    const uint pausedAt = m_ws->currentSample();
    QVERIFY(!m_widget->isCursorRunning());
    m_ws->play(false);
    QCOMPARE(m_ws->currentState(), SoundSample::Playing);
    QVERIFY(m_ws->currentSample() >= pausedAt);
    // Without a loop the cursor stops at the end of the selection.
    QTRY_COMPARE(m_ws->currentState(), SoundSample::Stopped);
    QCOMPARE(m_ws->currentSample(), 3000u);
    QCOMPARE(states.count(), 4);
    QVERIFY(cursor.count() >= 2);
    m_ws->play(false);
    m_ws->stop();
    QCOMPARE(states.last().at(0).value<SoundSample::State>(), SoundSample::Stopped);
    QVERIFY(!m_widget->isCursorRunning());
    m_ws->pause(); // nothing to pause
    QCOMPARE(states.count(), 6);
}

void SoundWorkspaceTest::loopWrapsTheCursor()
{
    m_ws->setSound(sineSample(8000, 2, 16, 400, 440, 0.3)); // 50 ms
    QSignalSpy cursor(m_ws.get(), &SoundWorkspace::currentSampleChanged);
    m_ws->play(true);
    auto wrapped = [&cursor] {
        for (int i = 1; i < cursor.count(); ++i)
            if (cursor.at(i).at(0).toUInt() < cursor.at(i - 1).at(0).toUInt())
                return true;
        return false;
    };
    QTRY_VERIFY(wrapped());
    QCOMPARE(m_ws->currentState(), SoundSample::Playing);
    m_ws->setSound(rampSample(10)); // a new sound stops playback
    QCOMPARE(m_ws->currentState(), SoundSample::Stopped);
}

void SoundWorkspaceTest::screenshot()
{
    m_host.options.insert(QStringLiteral("sound_wave"), QColor(30, 110, 60));
    showWith(sineSample(22050, 2, 16, 22050, 3, 0.8));
    m_widget->reconfig();
    m_ws->zoomFit();
    m_ws->select(5000, 9000);
    m_ws->setCurrentSample(14000);
    const QImage image = m_ws->grab().toImage();
    QVERIFY(image.save(QCoreApplication::applicationDirPath() + QStringLiteral("/soundworkspace.png")));
    const AudioWaveform *waveform = m_widget->waveform();
    const int cursorX = waveform->xOf(14000);
    const QColor atCursor = image.pixelColor(cursorX, 5);
    QVERIFY2(atCursor != image.pixelColor(cursorX + 20, 5), "the play cursor is drawn");
    const int inSelection = (waveform->xOf(5000) + waveform->xOf(9000)) / 2;
    QVERIFY2(image.pixelColor(inSelection, 2) != image.pixelColor(cursorX + 20, 2), "the selection is shaded");
}

QTEST_MAIN(SoundWorkspaceTest)
#include "tst_soundworkspace.moc"
