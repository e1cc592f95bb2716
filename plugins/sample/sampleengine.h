#pragma once

// The sample engine: the names, filters and file types of our small game format, and
// the extension through which a host finds it and opens its projects.
#include "engine/engine.h"
#include "engine/extension.h"

#include <QMap>

class SampleParentProject;

class SampleEngine : public Ovra::Engine
{
    Q_OBJECT
public:
    // The engine's own file types beyond the library's five.
    enum FileType { Definitions = 5 };

    SampleEngine();

    QString queryString(StringType type, uint index) const override;
    QString singleFileFilters(int fileType = -1) const override;
    Ovra::ProjectFile *createFile(int fileType, Ovra::Project *project) override;
    QSize gameSize() const override { return QSize(640, 480); }
    QPointF scaleFactors() const override { return QPointF(2.0, 2.0); }
    // The engine's own script types (samplescript.cpp).
    void registerScriptClasses(Ovra::Script::State &state) override;

    // The suffix of a file type's files, without the dot; empty for an unknown type.
    static QString suffix(int fileType);
    // The file type of a suffix, or -1.
    static int fileTypeOfSuffix(const QString &suffix);
    // The key that lists files of a type in a project file, and back (-1 if none).
    static QString fileKey(int fileType);
    static int fileTypeOfKey(const QString &key);
    static QString fileTypeName(int fileType);
};

class SampleEngineExtension : public Ovra::EngineExtension
{
public:
    ~SampleEngineExtension() override;

    const char *name() const override { return "sample"; }
    Ovra::Engine *engine() override;
    bool isProjectFile(const QString &fileName) const override;
    Ovra::Project *openProject(const QString &fileName, QString *error) override;

    // The directory of the work that holds the file: the nearest directory upwards with
    // the game mark in it, else the file's own directory.
    static QString workRoot(const QString &fileName);

private:
    friend class SampleParentProject;
    void forget(SampleParentProject *parent);

    SampleEngine *m_engine = nullptr;
    QMap<QString, SampleParentProject *> m_works;
};
