#pragma once

#include "project/organizable.h"
#include "project/projectfile.h"
#include "project/propertyitem.h"
#include "sound/soundsample.h"

namespace Ovra {

class Sounds;

// One sound of a container, as an engine keeps it: an identifier of the engine's (a group
// and a number, say) and the sample. How the bytes are stored is the engine's business.
class OVRA_EXPORT Sound : public PropertyItem
{
public:
    Sound(const Sound &) = default;

    // "Identifier".
    QStringList propertyNames() const override;

    virtual uint index() const = 0;
    virtual Sounds *parent() const = 0;
    // A copy in the same container, behind this one.
    virtual Sound *duplicate() = 0;
    virtual bool isEmpty() const = 0;
    // The decoded sound; empty data when it can't be decoded.
    virtual SoundSample sample() const = 0;
    // Its shape, without decoding where the engine can.
    virtual SampleInfo info() const = 0;
    // False, and nothing changed, when the container can't keep the sound.
    virtual bool setSample(const SoundSample &sample) = 0;
    virtual QVariant identifier() const = 0;
    virtual void setIdentifier(const QVariant &identifier) = 0;

    // Seconds the sound lasts; 0 for a sound of no rate.
    double duration() const;

protected:
    Sound() = default;
    virtual ~Sound();
};

// The sounds of a file, in the order the user organises them.
class OVRA_EXPORT Sounds : public OrganizableObject, public ProjectFile
{
    Q_OBJECT

public:
    using OrganizableObject::OrganizableObject;

    virtual uint selected() const = 0;
    virtual void setSelected(uint index) = 0;
    virtual uint count() const = 0;
    virtual Sound *at(uint index) const = 0;
    // Null when the container can't keep the sound.
    virtual Sound *add(const QVariant &identifier, const SoundSample &sample) = 0;
    virtual Sound *insert(uint index, const QVariant &identifier, const SoundSample &sample) = 0;
    virtual void remove(uint index) = 0;
    // From row `from` on, the first sound whose identifier is `identifier`, or -1.
    virtual int find(uint from, const QVariant &identifier) const = 0;
    virtual void clear() = 0;
};

} // namespace Ovra
