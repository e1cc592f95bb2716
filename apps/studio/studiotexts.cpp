#include "studiotexts.h"

#include <QCoreApplication>

QString StudioTexts::text(uint id)
{
    static const char *const texts[Count] = {
        QT_TRANSLATE_NOOP("StudioTexts", "Project"),
        QT_TRANSLATE_NOOP("StudioTexts", "Scripts"),
    };
    return id < Count ? QCoreApplication::translate("StudioTexts", texts[id]) : QString();
}

StudioTexts *StudioTexts::instance()
{
    static StudioTexts table;
    return &table;
}
