#pragma once

#include "foundation/global.h"

#include <QObject>
#include <QString>

namespace Ovra {

// A string table: texts and tool tips by number, so that a host can build
// actions without knowing the library's strings.
class OVRA_EXPORT Translator
{
public:
    virtual ~Translator() = default;
    virtual QString text(uint id) = 0;
    virtual QString tip(uint id);
    virtual QString detail(uint id);
};

// The library's own string table: ids 0 to 217, translated through this class's tr.
class OVRA_EXPORT OvraTranslator : public QObject, public Translator
{
    Q_OBJECT
public:
    QString text(uint id) override;
    QString tip(uint id) override;

    static constexpr uint Count = 218;

private:
    OvraTranslator() = default;
    friend OVRA_EXPORT Translator *ovraTranslator();
};

// The process-wide table, built on first use.
OVRA_EXPORT Translator *ovraTranslator();

} // namespace Ovra
