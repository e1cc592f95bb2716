// Opening a large work of the sample engine (5,000 sprites, 500 animations, 200 sounds)
// against reading the same files' bytes from disk, both from the page cache.
#include "animationdocument.h"
#include "sampleengine.h"
#include "samplework.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "image/sprite.h"
#include "project/project.h"
#include "sound/sound.h"

#include "ratioreporter.h"

#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTextDocument>

#include <cstdio>

using namespace Ovra;

namespace {

struct Work
{
    QTemporaryDir directory;
    QString projectFile;
    qint64 bytes = 0;

    Work()
    {
        QString error;
        if (!SampleWork::writeLarge(directory.path(), {5000, 500, 200}, &error))
            qFatal("can't write the work: %s", qPrintable(error));
        projectFile = directory.filePath(QStringLiteral("bulk/bulk.ovp"));
    }
};

Work &work()
{
    static Work instance;
    return instance;
}

SampleEngineExtension &engine()
{
    static SampleEngineExtension extension;
    return extension;
}

void readBytes(benchmark::State &state)
{
    qint64 total = 0;
    for (auto _ : state) {
        total = 0;
        QDirIterator files(work().directory.path(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            file.open(QIODevice::ReadOnly);
            const QByteArray bytes = file.readAll();
            total += bytes.size();
            benchmark::DoNotOptimize(bytes.constData());
        }
    }
    state.counters["MB"] = double(total) / 1e6;
}

Project *open()
{
    QString error;
    Project *project = engine().openProject(work().projectFile, &error);
    if (!project)
        qFatal("can't open the work: %s", qPrintable(error));
    return project;
}

// The project and every file it lists read and parsed. Closing the work is no part of
// opening it (reading bytes has nothing like it to compare with): closeProject times it.
void openProject(benchmark::State &state)
{
    uint sprites = 0;
    for (auto _ : state) {
        Project *project = open();
        sprites = static_cast<Sprites *>(project->file(Project::Sprites))->count();
        state.PauseTiming();
        project->release();
        state.ResumeTiming();
    }
    state.counters["sprites"] = sprites;
}

// The opened project released with everything it holds.
void closeProject(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        Project *project = open();
        state.ResumeTiming();
        project->release();
    }
}

// And then every sprite and every sound decoded, every animation's frames walked.
void openAndDecodeAll(benchmark::State &state)
{
    for (auto _ : state) {
        Project *project = open();
        auto *sprites = static_cast<Sprites *>(project->file(Project::Sprites));
        for (uint i = 0; i < sprites->count(); ++i)
            benchmark::DoNotOptimize(sprites->at(i)->image().constBits());
        auto *sounds = static_cast<Sounds *>(project->file(Project::Sounds));
        for (uint i = 0; i < sounds->count(); ++i)
            benchmark::DoNotOptimize(sounds->at(i)->sample().data.constData());
        auto *animations = static_cast<Animations *>(project->file(Project::Animations));
        uint frames = 0;
        for (uint i = 0; i < animations->count(); ++i)
            frames += animations->at(i)->frameCount();
        benchmark::DoNotOptimize(frames);
        project->release();
    }
}

// The resident size of the process in bytes.
double residentBytes()
{
    long pages = 0, resident = 0;
    if (FILE *statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(statm);
    }
    return double(resident) * 4096.0;
}

// An animation file of state.range(0) lines parsed into its document and node tree; the
// time should grow with the lines and no faster.
void animationLoad(benchmark::State &state)
{
    const int lines = int(state.range(0));
    const QString text = SampleWork::largeAnimationText(lines / 25, 5000);
    double bytesPerLine = 0;
    for (auto _ : state) {
        const double before = residentBytes();
        auto *document = new AnimationDocument;
        auto *animations = new SampleAnimations(document);
        document->fromString(text);
        bytesPerLine = (residentBytes() - before) / lines;
        animations->release();
    }
    state.counters["lines"] = lines;
    state.counters["bytes/line"] = bytesPerLine;
}

// The same text put into a plain QTextDocument: no parser, no node tree, only Qt's own
// fragment and block trees. Every line costs a few walks of those trees from their roots, so
// this grows as n log n; its ratio between the two sizes is the floor under animationLoad's.
void plainDocumentLoad(benchmark::State &state)
{
    const int lines = int(state.range(0));
    const QString text = SampleWork::largeAnimationText(lines / 25, 5000);
    int blocks = 0;
    for (auto _ : state) {
        QTextDocument document;
        document.setPlainText(text);
        blocks = document.blockCount();
    }
    state.counters["blocks"] = blocks;
}

} // namespace

BENCHMARK(plainDocumentLoad)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(animationLoad)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(readBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(openProject)->Unit(benchmark::kMillisecond);
BENCHMARK(closeProject)->Unit(benchmark::kMillisecond);
BENCHMARK(openAndDecodeAll)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // text layout needs the font database
    work(); // written before anything is timed
    RatioReporter reporter;
    reporter.addRatio("openProject", "readBytes");
    reporter.addRatio("closeProject", "readBytes");
    reporter.addRatio("openAndDecodeAll", "readBytes");
    reporter.addRatio("animationLoad/1000000/iterations:1", "animationLoad/100000/iterations:1");
    reporter.addRatio("plainDocumentLoad/1000000/iterations:1", "plainDocumentLoad/100000/iterations:1");
    reporter.addRatio("animationLoad/1000000/iterations:1", "plainDocumentLoad/1000000/iterations:1");
    return runWithRatios(argc, argv, reporter);
}
