// The sound editor as a person uses it: the actions and controls with their enabling, the
// texts and questions, the changes of the selection (fades, silence, effects, clipboard),
// a long random walk of edits against a plain model, the road back into the file, the
// resampling and import of sounds, and screenshots on the example work's sound bank.
#include "modalanswer.h"
#include "scriptedanswerer.h"
#include "testinterface.h"
#include "testsounds.h"

#include "cache/cachebackends.h"
#include "editors/sound/audiodata.h"
#include "editors/sound/audiosamplewidget.h"
#include "editors/sound/audiowaveform.h"
#include "editors/sound/resampledlg.h"
#include "editors/sound/soundeditor.h"
#include "editors/sound/soundworkspace.h"
#include "engine/extensionmanager.h"
#include "sound/sound.h"
#include "soundbank.h"
#include "soundeffects.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QProgressDialog>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

Q_DECLARE_METATYPE(Ovra::Sound *)

using namespace Ovra;

namespace {

const char *const actionNames[] = {
    "snd_add", "snd_delete", "snd_duplicate", "snd_next", "snd_prev", "snd_open_sample", "snd_save_sample",
    "snd_import_proj", "snd_resample", "snd_play", "snd_play_loop", "snd_pause", "snd_stop", "snd_select_all",
    "snd_select_none", "snd_remove_selection", "snd_fill_silence", "snd_fade_in", "snd_fade_out",
    "snd_save_changes", "snd_discard_changes", "snd_tool_move", "snd_tool_zoom", "snd_tool_select",
    "snd_tool_offset", "snd_tool_hresize", "snd_tool_vresize", "snd_tool_draw"};

const char *const controlNames[] = {"snd_sel", "snd_sel_lb", "snd_volume", "snd_selection", "snd_sel_start",
                                    "snd_sel_end", "snd_sel_start_lb", "snd_sel_end_lb", "snd_start_lb",
                                    "snd_end_lb", "snd_curr_sample", "snd_curr_sample_lb", "snd_info_lb"};

// Values that differ from frame to frame and channel to channel, and never sit at silence
// everywhere: what a step did can be seen.
SoundSample noiseSample(quint16 channels, quint16 bits, quint32 frames, quint32 frequency, quint32 seed)
{
    SoundSample sample;
    sample.channels = channels;
    sample.bits = bits;
    sample.frequency = frequency;
    sample.samples = frames;
    sample.data.resize(int(frames * channels * (bits / 8)));
    QRandomGenerator random(seed);
    for (char &byte : sample.data)
        byte = char(random.bounded(256));
    return sample;
}

QByteArray randomBytes(QRandomGenerator &random, int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

QByteArray reversedFrames(const QByteArray &bytes, int frameBytes)
{
    QByteArray out(bytes.size(), Qt::Uninitialized);
    const int frames = bytes.size() / frameBytes;
    for (int i = 0; i < frames; ++i)
        std::copy_n(bytes.constData() + (frames - 1 - i) * frameBytes, frameBytes, out.data() + i * frameBytes);
    return out;
}

} // namespace

class SoundEditorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void actionsAndControls();
    void enabling();
    void texts();
    void fadesChangeNothing_data();
    void fadesChangeNothing();
    void fillSilence_data();
    void fillSilence();
    void effectOnSelectionOrWhole();
    void copyAndPasteSameShape();
    void pasteOfAnotherShapeIsResampled();
    void mouseSelectionThenCutAndSilence();
    void randomEditsAgainstModel_data();
    void randomEditsAgainstModel();
    void discardQuestion();
    void deleteQuestion();
    void savedBackIntoTheFile();
    void soundSelectorAndNavigation();
    void resampleDialog();
    void resampleWalkCancels();
    void importFromAnotherFile();
    void screenshots();

private:
    QAction *action(const char *name) { return m_host.action(name); }
    void useSounds(const QList<SoundSample> &samples);
    const QByteArray &bytes() const { return m_ws->sound().data; }

    TestInterface m_host;
    std::unique_ptr<SoundWorkspace> m_ws;
    std::unique_ptr<SoundEditor> m_editor;
    std::unique_ptr<SoundBank> m_bank;
};

void SoundEditorTest::initTestCase()
{
    qRegisterMetaType<Sound *>();
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(qgetenv("ALSOFT_DRIVERS") == "null");
    // Undo data goes to the disk cache in every case here.
    m_host.options.insert(QStringLiteral("cache_type"), 2);
    ExtensionManager::add(new NormalizeEffect);
    ExtensionManager::add(new ReverseEffect);
    ExtensionManager::add(new EchoEffect);
}

void SoundEditorTest::init()
{
    m_ws.reset(new SoundWorkspace(&m_host));
    m_ws->resize(420, 220);
    m_editor.reset(new SoundEditor(m_ws.get(), 2));
    m_bank.reset(new SoundBank);
}

void SoundEditorTest::cleanup()
{
    m_editor.reset();
    m_ws.reset();
    m_bank.reset();
    m_host.options.remove(QStringLiteral("confirm_delete"));
}

void SoundEditorTest::useSounds(const QList<SoundSample> &samples)
{
    for (int i = 0; i < samples.size(); ++i)
        QVERIFY(m_bank->add(QPoint(1, i), samples.at(i)));
    m_editor->setCurrentFile(m_bank.get());
}

void SoundEditorTest::actionsAndControls()
{
    for (const char *name : actionNames)
        QVERIFY2(action(name), name);
    for (const char *name : controlNames)
        QVERIFY2(m_host.controls.contains(QString::fromLatin1(name)), name);
    QCOMPARE(m_editor->action()->objectName(), QStringLiteral("editor_snd"));
    QCOMPARE(m_editor->action()->text(), QStringLiteral("Sounds"));
    QCOMPARE(QByteArray(m_editor->name()), QByteArray("sounds"));
    QCOMPARE(m_editor->fileType(), 2);
    QCOMPARE(action("snd_fill_silence")->text(), QStringLiteral("Fill silence"));
    QCOMPARE(action("snd_tool_vresize")->text(), QStringLiteral("Vertical resizer"));
    QCOMPARE(m_host.actionScopes.value(QStringLiteral("snd_play")), QStringLiteral("sound/0"));
    const QList<QAction *> effects = m_editor->effectMenu()->actions();
    QCOMPARE(effects.size(), 3);
    QCOMPARE(effects.at(1)->text(), QStringLiteral("Reverse"));
    QCOMPARE(effects.at(1)->data().toInt(), 1);

    // The tool actions and the workspace's tool follow each other.
    useSounds({noiseSample(1, 16, 500, 8000, 1)});
    action("snd_tool_zoom")->trigger();
    QCOMPARE(m_ws->currentTool(), 2);
    m_ws->setCurrentTool(5);
    QVERIFY(action("snd_tool_hresize")->isChecked());
    QVERIFY(!action("snd_tool_zoom")->isChecked());
}

void SoundEditorTest::enabling()
{
    QVERIFY(!action("snd_add")->isEnabled());
    QVERIFY(!action("snd_play")->isEnabled());
    useSounds({noiseSample(1, 16, 500, 8000, 1), noiseSample(2, 8, 300, 8000, 2)});
    QVERIFY(action("snd_add")->isEnabled());
    QVERIFY(action("snd_play")->isEnabled());
    QVERIFY(!action("snd_prev")->isEnabled());
    QVERIFY(action("snd_next")->isEnabled());
    QVERIFY(!action("snd_fill_silence")->isEnabled());
    QVERIFY(!action("snd_save_changes")->isEnabled());
    m_ws->select(10, 20);
    QVERIFY(action("snd_fill_silence")->isEnabled());
    QVERIFY(action("snd_remove_selection")->isEnabled());
    action("snd_fill_silence")->trigger();
    QVERIFY(action("snd_save_changes")->isEnabled());
    QVERIFY(action("snd_discard_changes")->isEnabled());
    action("snd_discard_changes")->trigger();
    QVERIFY(!action("snd_save_changes")->isEnabled());
    QCOMPARE(bytes(), m_bank->at(0)->sample().data);
    action("snd_next")->trigger();
    QCOMPARE(m_editor->currentIndex(), 1);
    QVERIFY(action("snd_prev")->isEnabled());
    QVERIFY(!action("snd_next")->isEnabled());
}

void SoundEditorTest::texts()
{
    QCOMPARE(m_editor->infoText(),
             QStringLiteral("Channels: ---\nSample rate: ---\nBits per sample: ---\nDuration: ---\nTick count: ---"));
    QCOMPARE(m_editor->statusTexts(),
             QStringList({QStringLiteral("Status: Stopped"), QStringLiteral("Sample: ---/---"), QStringLiteral("Time: ---/---")}));
    auto *position = qobject_cast<QLabel *>(m_editor->panel()->findChild<QLabel *>(QStringLiteral("snd_position_lb")));
    QVERIFY(position);
    QCOMPARE(position->text(), QStringLiteral("0 / 0"));

    useSounds({noiseSample(2, 16, 8000, 16000, 1), noiseSample(1, 8, 300, 8000, 2)});
    m_editor->activate();
    QCOMPARE(m_editor->infoText(), QStringLiteral("Channels: 2 (Stereo)\nSample rate: 16000 Hz\nBits per sample: 16 "
                                                  "bits\nDuration: 0.500 seconds"));
    QCOMPARE(qobject_cast<QLabel *>(m_host.controls.value(QStringLiteral("snd_info_lb")))->text(), m_editor->infoText());
    m_ws->select(4000, 800);
    m_ws->setCurrentSample(1600);
    QCOMPARE(m_editor->statusTexts(),
             QStringList({QStringLiteral("Status: Stopped"), QStringLiteral("Sample: 1600/8000, Selection: 800/4000"),
                          QStringLiteral("Time: 0.100/0.500s, Selection: 0.050/0.250s")}));
    QCOMPARE(m_host.statusTexts.value(1), QStringLiteral("Sample: 1600/8000, Selection: 800/4000"));
    QCOMPARE(position->text(), QStringLiteral("1 / 2"));
    // The spin boxes show the bounds in the order given, and typing in them selects.
    auto *start = qobject_cast<QSpinBox *>(m_host.controls.value(QStringLiteral("snd_sel_start")));
    QCOMPARE(start->value(), 4000);
    start->setValue(100);
    QCOMPARE(m_ws->selectionStart(), 100u);
    m_editor->setCurrentSound(1);
    QVERIFY(m_editor->infoText().startsWith(QStringLiteral("Channels: 1 (Mono)\n")));
    QCOMPARE(position->text(), QStringLiteral("2 / 2"));
}

void SoundEditorTest::fadesChangeNothing_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<uint>("from");
    QTest::addColumn<uint>("to");
    for (int bits : {8, 16, 24, 32})
        for (int channels : {1, 2}) {
            QTest::addRow("%d-bit %dch", bits, channels) << channels << bits << 30u << 170u;
            QTest::addRow("%d-bit %dch one frame", bits, channels) << channels << bits << 60u << 61u;
        }
}

// The fades hand the bytes of a value where its bits belong: the values stay as they
// were, yet an undoable step is taken.
void SoundEditorTest::fadesChangeNothing()
{
    QFETCH(int, channels);
    QFETCH(int, bits);
    QFETCH(uint, from);
    QFETCH(uint, to);
    useSounds({noiseSample(quint16(channels), quint16(bits), 200, 8000, 7)});
    const QByteArray before = bytes();
    m_ws->select(from, to);
    action("snd_fade_in")->trigger();
    action("snd_fade_out")->trigger();
    QCOMPARE(bytes(), before);
    QCOMPARE(m_ws->audioData()->undoStack.count(), 2);
    QVERIFY(m_ws->isEdited());
    // A proper gain on the same values does change them: the check above can fail.
    QByteArray scaled = before.mid(int(from) * channels * bits / 8, channels * bits / 8);
    scaleSample(scaled.data(), scaled.data(), 0.0f, quint16(bits));
    QVERIFY(scaled != before.mid(int(from) * channels * bits / 8, channels * bits / 8));
}

void SoundEditorTest::fillSilence_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<char>("silence");
    QTest::newRow("8-bit") << 8 << char(128);
    QTest::newRow("16-bit") << 16 << char(0);
    QTest::newRow("24-bit") << 24 << char(0);
}

void SoundEditorTest::fillSilence()
{
    QFETCH(int, bits);
    QFETCH(char, silence);
    useSounds({noiseSample(2, quint16(bits), 100, 8000, 3)});
    QByteArray expected = bytes();
    action("snd_fill_silence")->trigger(); // no selection: nothing
    QCOMPARE(m_ws->audioData()->undoStack.count(), 0);
    m_ws->select(70, 20);
    action("snd_fill_silence")->trigger();
    const int frameBytes = 2 * bits / 8;
    expected.replace(20 * frameBytes, 50 * frameBytes, QByteArray(50 * frameBytes, silence));
    QCOMPARE(bytes(), expected);
    m_editor->undo();
    m_editor->redo();
    QCOMPARE(bytes(), expected);
}

void SoundEditorTest::effectOnSelectionOrWhole()
{
    useSounds({sineSample(8000, 2, 16, 400, 300, 0.25)});
    const QByteArray original = bytes();
    const int frameBytes = 4;
    m_ws->select(300, 100);
    m_editor->effectMenu()->actions().at(0)->trigger(); // Normalize
    QByteArray part = original.mid(100 * frameBytes, 200 * frameBytes);
    NormalizeEffect normalize;
    QVERIFY(normalize.apply(m_ws->sound(), part));
    QCOMPARE(bytes(), original.left(100 * frameBytes) + part + original.mid(300 * frameBytes));
    QVERIFY(part != original.mid(100 * frameBytes, 200 * frameBytes));
    QCOMPARE(m_ws->selectionStart(), 100u);
    QCOMPARE(m_ws->selectionEnd(), 300u);

    m_editor->undo();
    m_ws->select(0, 0);
    m_editor->effectMenu()->actions().at(1)->trigger(); // Reverse, on the whole sound
    QCOMPARE(bytes(), reversedFrames(original, frameBytes));
    QCOMPARE(m_ws->selectionStart(), 0u);
    QCOMPARE(m_ws->selectionEnd(), 0u);
}

void SoundEditorTest::copyAndPasteSameShape()
{
    useSounds({noiseSample(2, 16, 300, 22050, 4)});
    const QByteArray original = bytes();
    m_ws->select(50, 80);
    m_editor->copy();
    const QMimeData *mime = QApplication::clipboard()->mimeData();
    QCOMPARE(mime->formats(), QStringList{QStringLiteral("audio/pcm;precision=16;channels=2;frequency=22050")});
    QCOMPARE(mime->data(mime->formats().first()), original.mid(200, 120));
    m_ws->select(10, 10);
    m_editor->paste();
    QCOMPARE(bytes(), original.left(40) + original.mid(200, 120) + original.mid(40));
    QCOMPARE(m_ws->selectionStart(), 10u);
    QCOMPARE(m_ws->selectionEnd(), 40u);
    // Pasted over a selection, the frames replace it in one step.
    m_ws->select(0, 5);
    m_editor->paste();
    QCOMPARE(m_ws->sound().samples, 355u);
    m_editor->undo();
    QCOMPARE(m_ws->sound().samples, 330u);
    // Something that isn't frames is left alone.
    auto *text = new QMimeData;
    text->setText(QStringLiteral("audio/pcm"));
    QApplication::clipboard()->setMimeData(text);
    const QByteArray before = bytes();
    m_editor->paste();
    QCOMPARE(bytes(), before);
}

void SoundEditorTest::pasteOfAnotherShapeIsResampled()
{
    useSounds({noiseSample(2, 8, 200, 11025, 5)});
    const QByteArray original = bytes();
    const SoundSample foreign = sineSample(22050, 1, 16, 1000, 440, 0.5);
    auto *mime = new QMimeData;
    mime->setData(QStringLiteral("audio/pcm;channels=1;precision=16;frequency=22050"), foreign.data);
    QApplication::clipboard()->setMimeData(mime);
    m_ws->select(20, 20);
    m_editor->paste();

    SoundSample expected;
    expected.channels = 1;
    expected.bits = 16;
    expected.frequency = 22050;
    expected.samples = 1000;
    expected.data = foreign.data;
    QVERIFY(resampleSound(expected, m_ws->sound()));
    QVERIFY(expected.samples > 450 && expected.samples < 550);
    QCOMPARE(bytes(), original.left(40) + expected.data + original.mid(40));
    QCOMPARE(m_ws->selectionEnd(), 20u + expected.samples);
}

void SoundEditorTest::mouseSelectionThenCutAndSilence()
{
    useSounds({noiseSample(1, 16, 1000, 8000, 6)});
    m_ws->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_ws.get()));
    AudioSampleWidget *widget = m_ws->sampleWidget();
    QCOMPARE(widget->waveform()->frameAt(120), 120u);
    QByteArray expected = bytes();
    action("snd_tool_select")->trigger();
    QTest::mousePress(widget, Qt::LeftButton, {}, QPoint(40, 60));
    QTest::mouseMove(widget, QPoint(90, 60));
    QTest::mouseRelease(widget, Qt::LeftButton, {}, QPoint(120, 60));
    m_editor->cut();
    const QByteArray cutBytes = expected.mid(80, 160);
    expected.remove(80, 160);
    QCOMPARE(bytes(), expected);
    QCOMPARE(QApplication::clipboard()->mimeData()->data(QStringLiteral("audio/pcm;precision=16;channels=1;frequency=8000")),
             cutBytes);
    QCOMPARE(m_ws->selectionEnd(), 40u);

    QTest::mousePress(widget, Qt::LeftButton, {}, QPoint(200, 60));
    QTest::mouseRelease(widget, Qt::LeftButton, {}, QPoint(150, 60));
    action("snd_fill_silence")->trigger();
    expected.replace(300, 100, QByteArray(100, 0));
    QCOMPARE(bytes(), expected);
}

void SoundEditorTest::randomEditsAgainstModel_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    for (int bits : {8, 16, 24})
        for (int channels : {1, 2})
            QTest::addRow("%d-bit %dch", bits, channels) << channels << bits;
}

void SoundEditorTest::randomEditsAgainstModel()
{
    QFETCH(int, channels);
    QFETCH(int, bits);
    useSounds({noiseSample(quint16(channels), quint16(bits), 400, 8000, 11)});
    auto *disk = dynamic_cast<DiskCache *>(m_ws->audioData()->cache);
    QVERIFY(disk);
    const int frameBytes = channels * bits / 8;
    QList<QByteArray> history{bytes()};
    int at = 0;
    QByteArray clip;
    uint start = 0, end = 0;
    auto edited = [&](const QByteArray &now) {
        history.erase(history.begin() + at + 1, history.end());
        history << now;
        ++at;
    };
    QRandomGenerator random(quint32(channels * 100 + bits));
    for (int step = 0; step < 300; ++step) {
        QByteArray model = history.at(at);
        const uint frames = uint(model.size() / frameBytes);
        m_ws->selection(start, end);
        const int from = int(start) * frameBytes, size = int(end - start) * frameBytes;
        const int choice = random.bounded(10);
        switch (choice) {
        case 0: {
            m_ws->select(random.bounded(frames + 1), random.bounded(frames + 1));
            break;
        }
        case 1: { // a change of the selection, of its own length or not
            const int count = random.bounded(2) && size ? size : frameBytes * (1 + random.bounded(40));
            const QByteArray put = randomBytes(random, count);
            QVERIFY(m_ws->changeSelectedSamples(put));
            edited(model.replace(from, size, put));
            break;
        }
        case 2:
            if (size) {
                action("snd_remove_selection")->trigger();
                edited(model.remove(from, size));
                QCOMPARE(m_ws->selectionEnd(), start);
            }
            break;
        case 3:
            if (size) {
                action("snd_fill_silence")->trigger();
                edited(model.replace(from, size, QByteArray(size, bits > 8 ? 0 : char(128))));
            }
            break;
        case 4: { // Reverse: the selection, or the whole sound
            m_editor->effectMenu()->actions().at(1)->trigger();
            if (frames > 0) {
                const int f = size ? from : 0, s = size ? size : model.size();
                edited(model.replace(f, s, reversedFrames(model.mid(f, s), frameBytes)));
            }
            break;
        }
        case 5:
            if (size) {
                m_editor->copy();
                clip = model.mid(from, size);
            }
            break;
        case 6:
            if (!clip.isEmpty()) {
                m_editor->paste();
                edited(model.replace(from, size, clip));
                QCOMPARE(m_ws->selectionEnd(), start + uint(clip.size() / frameBytes));
            }
            break;
        case 7:
        case 8:
            if (at > 0) {
                m_editor->undo();
                --at;
            }
            break;
        case 9:
            if (at + 1 < history.size()) {
                m_editor->redo();
                ++at;
            }
            break;
        }
        QVERIFY2(bytes() == history.at(at), qPrintable(QStringLiteral("step %1, choice %2, selection %3-%4").arg(step).arg(choice).arg(start).arg(end)));
        QCOMPARE(m_ws->sound().samples, uint(history.at(at).size() / frameBytes));
        QCOMPARE(m_ws->audioData()->undoStack.index(), at);
        if (history.at(at).isEmpty()) { // a sound gone to nothing gets frames again
            QVERIFY(m_ws->changeSelectedSamples(randomBytes(random, frameBytes * 50)));
            edited(bytes());
        }
    }
    // The old bytes of the history live in the disk cache's file.
    QVERIFY(!m_ws->audioData()->cache->items().isEmpty());
    QVERIFY(disk->fileSize() > 0);
    QVERIFY(QFileInfo(disk->fileName()).size() >= disk->fileSize());
}

void SoundEditorTest::discardQuestion()
{
    useSounds({noiseSample(1, 16, 100, 8000, 1), noiseSample(1, 16, 100, 8000, 2)});
    QVERIFY(m_editor->canDiscardChanges());
    m_ws->select(0, 10);
    action("snd_fill_silence")->trigger();
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Yes});
    action("snd_next")->trigger();
    QCOMPARE(m_editor->currentIndex(), 0);
    QCOMPARE(user.prompts().size(), 1);
    QCOMPARE(user.prompts().at(0).title, QStringLiteral("Discard changes?"));
    QCOMPARE(user.prompts().at(0).text, QStringLiteral("Do you want to discard the changes made in the current sound?"));
    action("snd_next")->trigger();
    QCOMPARE(m_editor->currentIndex(), 1);
    QCOMPARE(m_bank->at(0)->sample().data, noiseSample(1, 16, 100, 8000, 1).data);
}

void SoundEditorTest::deleteQuestion()
{
    useSounds({noiseSample(1, 16, 100, 8000, 1), noiseSample(1, 16, 100, 8000, 2)});
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Yes});
    QSignalSpy counts(m_editor.get(), &SoundEditor::soundCountChanged);
    action("snd_delete")->trigger(); // without confirm_delete: no question
    QCOMPARE(m_bank->count(), 1u);
    QVERIFY(user.prompts().isEmpty());
    QVERIFY(counts.count() >= 1);
    m_host.options.insert(QStringLiteral("confirm_delete"), true);
    action("snd_delete")->trigger();
    QCOMPARE(m_bank->count(), 1u);
    QCOMPARE(user.prompts().last().text, QStringLiteral("Do you really want to delete the sound?"));
    action("snd_delete")->trigger();
    QCOMPARE(m_bank->count(), 0u);
    QVERIFY(!m_editor->currentSound());
    QVERIFY(!action("snd_play")->isEnabled());
}

void SoundEditorTest::savedBackIntoTheFile()
{
    useSounds({noiseSample(2, 16, 300, 8000, 1)});
    m_bank->beginChange();
    m_bank->endChange();
    m_ws->select(100, 150);
    action("snd_remove_selection")->trigger();
    const QByteArray edited = bytes();
    QVERIFY(m_editor->isModified());
    action("snd_save_changes")->trigger();
    QVERIFY(!m_ws->isEdited());
    QVERIFY(m_bank->isModified());
    QCOMPARE(m_bank->at(0)->sample().data, edited);
    // The file as written holds the edit.
    SoundBank again;
    QVERIFY(again.fromBytes(m_bank->toBytes()));
    QCOMPARE(again.at(0)->sample().data, edited);
    QCOMPARE(again.at(0)->sample().samples, 250u);
    // A file save takes the pending edit of the sound with it.
    m_ws->select(0, 10);
    action("snd_fill_silence")->trigger();
    m_editor->save();
    QVERIFY(!m_ws->isEdited());
    QCOMPARE(m_bank->at(0)->sample().data, bytes());
}

void SoundEditorTest::soundSelectorAndNavigation()
{
    useSounds({noiseSample(1, 16, 100, 8000, 1), noiseSample(2, 8, 50, 8000, 2), noiseSample(1, 24, 70, 8000, 3)});
    auto *selector = qobject_cast<QComboBox *>(m_host.controls.value(QStringLiteral("snd_sel")));
    QVERIFY(selector);
    QCOMPARE(selector->count(), 3);
    m_editor->panel()->show();
    QSignalSpy changed(m_editor.get(), &SoundEditor::soundChanged);
    selector->setFocus();
    QTest::keyClick(selector, Qt::Key_Down);
    QTest::keyClick(selector, Qt::Key_Down);
    QTRY_COMPARE(m_editor->currentIndex(), 2);
    QCOMPARE(m_ws->sound().bits, 24);
    QVERIFY(changed.count() >= 1);
    QCOMPARE(m_bank->selected(), 2u);
    action("snd_duplicate")->trigger();
    QCOMPARE(m_bank->count(), 4u);
    QCOMPARE(m_editor->currentIndex(), 3);
    QCOMPARE(bytes(), m_bank->at(2)->sample().data);
    m_editor->navigateTo(0, 0);
    QCOMPARE(m_editor->currentIndex(), 0);
}

void SoundEditorTest::resampleDialog()
{
    useSounds({noiseSample(1, 16, 400, 8000, 1), noiseSample(2, 16, 400, 8000, 2), noiseSample(1, 16, 400, 11025, 3)});
    whenShown<ResampleDlg>([](ResampleDlg *dialog) {
        // Shaped as the current sound: the two others are ticked.
        QCOMPARE(dialog->selectedSounds(), QList<uint>({1, 2}));
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("invert")), Qt::LeftButton);
        QCOMPARE(dialog->selectedSounds(), QList<uint>({0}));
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("all")), Qt::LeftButton);
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("clear")), Qt::LeftButton);
        QVERIFY(dialog->selectedSounds().isEmpty());
        dialog->list()->item(0)->setCheckState(Qt::Checked);
        dialog->list()->item(2)->setCheckState(Qt::Checked);
        SampleInfo target;
        target.channels = 2;
        target.bits = 8;
        target.frequency = 16000;
        dialog->setTarget(target);
        QCOMPARE(dialog->selectedSounds(), QList<uint>({0, 2})); // ticked by hand: kept
        dialog->accept();
    });
    SoundSample expected = m_bank->at(2)->sample();
    action("snd_resample")->trigger();
    for (uint i : {0u, 2u}) {
        const SampleInfo info = m_bank->at(i)->info();
        QCOMPARE(info.channels, quint16(2));
        QCOMPARE(info.bits, quint16(8));
        QCOMPARE(info.frequency, 16000u);
    }
    QCOMPARE(m_bank->at(1)->info().bits, quint16(16));
    QVERIFY(resampleSound(expected, m_bank->at(2)->info()));
    QCOMPARE(m_bank->at(2)->sample().data, expected.data);
    QCOMPARE(m_ws->sound().frequency, 16000u); // the current sound shows the result
}

void SoundEditorTest::resampleWalkCancels()
{
    useSounds({noiseSample(1, 16, 400, 8000, 1), noiseSample(1, 16, 400, 8000, 2), noiseSample(1, 16, 400, 8000, 3)});
    SampleInfo target;
    target.channels = 1;
    target.bits = 8;
    target.frequency = 8000;
    // The user cancels as soon as the progress shows.
    QMetaObject::invokeMethod(
        this,
        [] {
            const QList<QProgressDialog *> dialogs = QApplication::activeModalWidget()
                                                         ? QApplication::activeModalWidget()->findChildren<QProgressDialog *>()
                                                         : QList<QProgressDialog *>();
            auto *dialog = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
            if (!dialog && !dialogs.isEmpty())
                dialog = dialogs.first();
            if (dialog) {
                QCOMPARE(dialog->labelText(), QStringLiteral("Resampling..."));
                dialog->cancel();
            }
        },
        Qt::QueuedConnection);
    const int done = m_editor->resampleSounds({0, 1, 2}, target);
    QVERIFY(done < 3);
    QCOMPARE(m_bank->at(2)->info().bits, quint16(16));
    for (uint i = 0; i < uint(done); ++i)
        QCOMPARE(m_bank->at(i)->info().bits, quint16(8));
    // Without cancelling every sound goes, and a single one needs no progress.
    QCOMPARE(m_editor->resampleSounds({0, 1, 2}, target), 3);
    QCOMPARE(m_bank->at(2)->info().bits, quint16(8));
}

void SoundEditorTest::importFromAnotherFile()
{
    useSounds({noiseSample(1, 16, 100, 8000, 1), noiseSample(1, 16, 100, 8000, 2)});
    SoundBank other;
    QVERIFY(other.add(QPoint(1, 1), noiseSample(2, 8, 60, 8000, 21)));
    QVERIFY(other.add(QPoint(5, 0), noiseSample(1, 16, 80, 8000, 22)));
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Ok, QMessageBox::Yes, QMessageBox::Ok});
    QCOMPARE(m_editor->importSounds(&other, {0}), 0);
    QCOMPARE(user.prompts().at(0).title, QStringLiteral("Conflict resolution!"));
    QCOMPARE(user.prompts().at(0).text, QStringLiteral("Sound '1,1' already exists, do you want to replace it?"));
    QCOMPARE(user.prompts().at(1).text, QStringLiteral("No sound imported!"));
    QCOMPARE(m_editor->importSounds(&other, {0, 1}), 2);
    QCOMPARE(user.prompts().at(3).text, QStringLiteral("2 sound(s) were imported!"));
    QCOMPARE(m_bank->count(), 3u);
    QCOMPARE(m_bank->at(1)->sample().data, other.at(0)->sample().data);
    QCOMPARE(m_bank->at(2)->identifier().toPoint(), QPoint(5, 0));
}

// The example work's sounds, a mono and a stereo one, each with a selection, shown zoomed
// out to the whole sound (top) and zoomed in (bottom).
void SoundEditorTest::screenshots()
{
    QFile source(QStringLiteral(OVRA_EXAMPLES_DIR "/sample/knight/knight.sbk"));
    QVERIFY2(source.open(QIODevice::ReadOnly), qPrintable(source.fileName()));
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("knight.sbk"));
    QVERIFY(source.copy(copy));
    QFile file(copy);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(m_bank->fromBytes(file.readAll()));
    m_editor->setCurrentFile(m_bank.get());
    QWidget window;
    QWidget *panel = m_editor->panel();
    const auto giveBack = qScopeGuard([this, panel] {
        panel->setParent(nullptr);
        m_ws->setParent(nullptr);
    });
    auto *layout = new QHBoxLayout(&window);
    m_ws->setParent(&window);
    layout->addWidget(m_ws.get(), 1);
    // Activating the editor lays its panel out beside the waveform.
    m_editor->activate();
    QCOMPARE(m_ws->sidePanel(), panel);
    QCOMPARE(panel->parentWidget(), m_ws.get());
    window.resize(760, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_host.options.insert(QStringLiteral("sound_wave"), QColor(30, 110, 60));
    m_editor->reconfig();
    // The example's sounds are all mono: the stereo picture shows the first one brought
    // to two channels by the editor's own resampling.
    int stereo = -1;
    for (uint i = 0; i < m_bank->count() && stereo < 0; ++i)
        if (m_bank->at(i)->info().channels == 2)
            stereo = int(i);
    if (stereo < 0) {
        QVERIFY(m_bank->count() > 1);
        SampleInfo target = m_bank->at(1)->info();
        target.channels = 2;
        QCOMPARE(m_editor->resampleSounds({1}, target), 1);
        stereo = 1;
    }
    const int mono = stereo == 0 ? 1 : 0;
    QCOMPARE(m_bank->at(uint(mono))->info().channels, quint16(1));
    int shots = 0;
    for (const auto &[index, name] : {std::pair<int, const char *>{mono, "soundeditor-mono.png"},
                                      std::pair<int, const char *>{stereo, "soundeditor-stereo.png"}}) {
        QVERIFY(m_editor->setCurrentSound(index));
        const uint frames = m_ws->sound().samples;
        m_ws->zoomFit();
        m_ws->select(frames / 4, frames / 2);
        QCoreApplication::processEvents();
        const QImage out = window.grab().toImage();
        m_ws->zoomIn();
        m_ws->zoomIn();
        m_ws->zoomIn();
        m_ws->sampleWidget()->waveform()->setFirstFrame(frames / 4 - 50);
        QCoreApplication::processEvents();
        const QImage in = window.grab().toImage();
        QVERIFY(m_ws->sampleWidget()->waveform()->hScale() > out.width() / double(frames));
        QImage both(out.width(), out.height() * 2, QImage::Format_ARGB32);
        QPainter painter(&both);
        painter.drawImage(0, 0, out);
        painter.drawImage(0, out.height(), in);
        painter.end();
        QVERIFY(both.save(QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name)));
        ++shots;
    }
    QCOMPARE(shots, 2);
}

QTEST_MAIN(SoundEditorTest)
#include "tst_soundeditor.moc"
