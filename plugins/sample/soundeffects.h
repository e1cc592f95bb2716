#pragma once

// The sample engine's sound effects for the editor's menu: Normalize, Reverse and Echo.
// They work on every depth the library keeps (8, 16, 24 and 32 bits) through the float
// form of the values.
#include "engine/extension.h"

// Brings the loudest value to full scale; silence stays silence.
class NormalizeEffect : public Ovra::SoundEffectExtension
{
public:
    const char *format() const override { return "NORMALIZE"; }
    const char *name() const override { return "Normalize"; }
    bool apply(const Ovra::SampleInfo &info, QByteArray &frames) override;
};

// The frames in reverse order, each frame's channels kept together.
class ReverseEffect : public Ovra::SoundEffectExtension
{
public:
    const char *format() const override { return "REVERSE"; }
    const char *name() const override { return "Reverse"; }
    bool apply(const Ovra::SampleInfo &info, QByteArray &frames) override;
};

// Each frame gets half of the frame a quarter of a second before it, echo upon echo,
// within the selection's length; values are held to full scale.
class EchoEffect : public Ovra::SoundEffectExtension
{
public:
    const char *format() const override { return "ECHO"; }
    const char *name() const override { return "Echo"; }
    bool apply(const Ovra::SampleInfo &info, QByteArray &frames) override;
};
