#pragma once

// Pictures and sounds of the sample work, drawn and synthesised by code so that every
// run makes the same bytes: a knight in an indexed palette, true-colour effects, and a
// few short sounds.
#include "image/imagedata.h"
#include "sound/soundsample.h"

#include <QImage>
#include <QVector>

namespace SampleArt {

enum class Move { Idle, Walk, Punch, Jump, Hurt };

struct MoveInfo
{
    Move move;
    int group;      // the sprite group of the move's frames
    int frames;
    const char *name;
};

// The knight's moves in sprite-group order.
const QVector<MoveInfo> &moves();

// The knight's palette: index 0 transparent, the cloth in one of three team colours.
QVector<QRgb> knightPalette(int team);
Ovra::RGBA paletteEntry(const QVector<QRgb> &palette, int index);

// One frame of a move, indexed over knightPalette(); its axis (between the feet) is
// knightAxis().
QImage knight(Move move, int frame);
QPoint knightAxis();
// Where the fist is in a frame of the punch, for its attack box.
QPoint fist(int frame);

// True-colour pictures with alpha.
QImage spark(int frame);    // 32 x 32, four frames
QImage fireball(int frame); // 40 x 24, four frames
QImage portrait();          // 64 x 64, opaque

// A small indexed picture of any size, for generated works of many sprites.
QImage tile(int seed, int width, int height);

// Sounds: 16-bit mono unless said.
Ovra::SoundSample swing();
Ovra::SoundSample hit();
Ovra::SoundSample jump();
Ovra::SoundSample step();
// A short tune of exactly 65536 frames: one whole block of the Ogg Vorbis writer, which
// ends a stream only on whole blocks.
Ovra::SoundSample tune();
// Silence of `frames` frames with a click in the middle, for generated works.
Ovra::SoundSample blip(int seed, int frames);

// The engine's icon, 32 x 32.
QImage icon();

} // namespace SampleArt
