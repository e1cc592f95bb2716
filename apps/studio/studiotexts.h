#pragma once

// The studio's own string table, for the labels the library's table doesn't hold: the
// editors of project files and of scripts.
#include "foundation/translator.h"

class StudioTexts : public Ovra::Translator
{
public:
    enum Id : uint { ProjectFiles = 0, ScriptFiles = 1, Count };

    QString text(uint id) override;

    // The one table of the program.
    static StudioTexts *instance();
};
