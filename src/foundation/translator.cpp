#include "foundation/translator.h"

#include <QtGlobal>

#include <algorithm>
#include <iterator>

namespace Ovra {
namespace {

// Source texts indexed by id. The ids are part of the contract with hosts, which
// build menus and toolbars from them, so entries are never reordered or removed;
// a word used by several editors ("Add", "Delete", ...) gets one entry per use so
// that each can be translated on its own if a language needs it.
const char *const sourceTexts[] = {
    // General
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "System"),                          // 0
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "No document."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Reload"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator",
                      "Do you want to reload the file using the specified encoding?\n"
                      "This will make the editor display characters using this encoding, "
                      "otherwise characters will remain unchanged and only saved using this "
                      "encoding."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Code toolbar"),
    // View toggles of the animation and graphics views
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Centralize origin"),               // 5
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Main cross"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Secondary cross"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Extra cross"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Rulers"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Guide lines"),                     // 10
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Attack Box"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Collision Box"),
    // Code snippets and code editor
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Code snippets"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Insert code snippet"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "New code snippet"),                // 15
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Edit code snippet"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Code"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to line..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous syntax error"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next syntax error"),               // 20
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous deprecation"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next deprecation"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Comment/Uncomment selection"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Fold all code blocks"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Unfold all coded blocks"),         // 25
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Auto-indent selection"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Auto-format selection"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Encoding"),
    // File
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "New"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Open"),                            // 30
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save as..."),
    // Palette editor
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Palettes"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Clear"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Clear all unused"),                // 35
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remove all duplicates"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Change..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save as..."),                      // 40
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remap"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Undo"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Redo"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Exchange position of selected colors"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Sets the color of the selected slots"), // 45
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Apply to the sprites"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous palette"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next palette"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Open palette"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save current palette"),            // 50
    // Animation editor
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Animations"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Edit code"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate"),                       // 55
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Edit animation code"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save as animated GIF..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Stop"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move 1px to the left"),            // 60
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move 1px up"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move 1px to the right"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move 1px down"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add frame"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete frame"),                    // 65
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add Attack box"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add Collision box"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete selected Contact boxes"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete all Contact boxes"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator",
                      "Delete all Contact boxes of current animation"),           // 70
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Switch Contact box type"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Copy Contact boxes of previous frame"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator",
                      "Use these Contact boxes in all other instances of this frame"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Optimize"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Export..."),                       // 75
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import from another project..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Apply time to all next frames"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Apply flip to all next frames"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Apply offset to all next frames"), // 80
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Apply scale to all next frames"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Alignment Tool"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Frames:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "X axis:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Y axis:"),                         // 85
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Flip:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "None"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Vertically"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Horizontally"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Both"),                            // 90
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "X scale:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Y scale:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Angle:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Time:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous animation"),              // 95
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next animation"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous frame"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next frame"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "OnionSkin"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Find animation"),                  // 100
    // Sprite editor: navigation, tools and blend modes
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Sprites"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous sprite"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next sprite"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move canvas"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move selection"),                  // 105
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Rectangle selection"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Free selection"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Magic Wand"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Color picker"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Pen"),                             // 110
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Eraser"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remap pen"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Paint bucket"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Normal"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add"),                             // 115
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Multiply"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Screen"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Overlay"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Darken"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Lighten"),                         // 120
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Color Dodge"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Color Burn"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Hard Light"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Soft Light"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Difference"),                      // 125
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Exclusion"),
    // Layers
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Layers"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate"),                       // 130
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Merge visible"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Merge all"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save visible as sprites"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play"),
    // Sprite editor: sprite list and image
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete"),                          // 135
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Change image..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save image changes"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save image..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play layers"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Crop image"),                      // 140
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Export..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import from another project..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Switch to the frame's sprite"),    // 145
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Original"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Image"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Properties"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Resize"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Rotation"),                        // 150
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Rotate"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Flip horizontally"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Flip vertically"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Split channels"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Select"),                          // 155
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "All"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Deselect"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Invert"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Switch to the sprite palette"),
    // Sound editor
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Sounds"),                          // 160
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Change sound..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save sound as..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Resample"),                        // 165
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play with loop"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Pause"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Stop"),                            // 170
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Export..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import from another project..."),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Previous sound"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Select"),                          // 175
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Next sound"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "All"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Deselect"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remove selected"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Fill silence"),                    // 180
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Fade in"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Fade out"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save changes"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Discard changes"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Effects"),                         // 185
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Selection:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Start:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "End:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Selection start:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Selection end:"),                  // 190
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Current sample:"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move view offset"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Zoom"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Free selection"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move selection"),                  // 195
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Horizontal resizer"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Vertical resizer"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Wave draw tool"),
    // Organizer
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Organizer"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move one position up"),            // 200
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move one position down"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move ten positions up"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move ten positions down"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move to the top"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move to the bottom"),              // 205
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Organize automatically"),
    // Sprite explorer
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Sprite explorer"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add selected to the current animation"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add all to the current animation"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "New animation with selected"),     // 210
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "New animation with all"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add selected as layers"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add all as layers"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add selected as layers (aligned)"),
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add all as layers (aligned)"),     // 215
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save selected images"),
    // Emulator
    QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Emulator"),
};

static_assert(std::size(sourceTexts) == OvraTranslator::Count,
              "every id below OvraTranslator::Count needs exactly one source text");

struct TipEntry
{
    uint id;
    const char *source;
};

// Tool tips that say more than the action's own text. Only ids listed here have
// one; the rest fall back to the text, which is already self-explanatory for
// labels, tool names and blend modes. Kept sorted by id for the binary search.
constexpr TipEntry sourceTips[] = {
    {4, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the code toolbar in all code editors")},
    {5, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Place the origin at the center of the workspace")},
    {6, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the main cross")},
    {7, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the secondary cross")},
    {8, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the extra cross")},
    {9, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the rulers")},
    {10, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the guide lines")},
    {11, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the Attack boxes")},
    {12, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show/Hide the Collision boxes")},
    {14, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Insert the current code snippet")},
    {15, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Create a new code snippet")},
    {16, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Edit the current code snippet")},
    {18, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the specifed line")},
    {19, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the previous syntax error")},
    {20, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the next syntax error")},
    {21, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the previous deprecation")},
    {22, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the next deprecation")},
    {23, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Comment/Uncomment all selected lines")},
    {26, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Auto-indent selected lines")},
    {27, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Auto-format selected lines")},
    {28, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Selects the file encoding")},
    {34, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Clear all the slots of the palette")},
    {35, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Clear the colors that are not used by any sprite")},
    {36, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add one or more palettes")},
    {37, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the selected palettes")},
    {38, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remove all duplicated palettes")},
    {39, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Change the palette using a file...")},
    {40, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save the palette as a file...")},
    {41, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remap the pixels of the sprites to the new order of the slots")},
    {46, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Apply the current palette to the chosen sprites...")},
    {49, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Open a palette file...")},
    {50, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save the current palette")},
    {52, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Edit the code of the animation file")},
    {53, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add a new animation")},
    {54, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the selected animations")},
    {55, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate the current animation")},
    {56, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Edit the code of the current animation")},
    {57, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save the current animation as an animated GIF...")},
    {58, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play the current animation")},
    {59, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Stop the current animation")},
    {60, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move the selected Contact boxes or the offset 1px to the left")},
    {61, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move the selected Contact boxes or the offset 1px up")},
    {62, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move the selected Contact boxes or the offset 1px to the right")},
    {63, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Move the selected Contact boxes or the offset 1px down")},
    {64, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add a new frame to the current animation")},
    {65, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the current frame")},
    {66, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add an Attack box to the current frame")},
    {67, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add a Collision box to the current frame")},
    {68, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the selected Contact boxes")},
    {69, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete all Contact boxes of the current frame")},
    {70, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remove all Contact boxs of current animation")},
    {71, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Switch the selected Contact boxes between Attack and Collision")},
    {72, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Copy the Contact boxes of the previous frame into the current frame")},
    {74, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Optimize the animations")},
    {75, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Export the selected animations...")},
    {76, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import one or more animations...")},
    {77, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import one or more animations from another opened project...")},
    {99, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Enable OnionSkin")},
    {102, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the previous sprite")},
    {103, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Go to the next sprite")},
    {115, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add blend mode")},
    {128, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add a new layer")},
    {129, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the current layer")},
    {130, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate the current layer")},
    {131, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Merge the visible layers into one")},
    {132, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Merge all layers into one")},
    {135, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the selected sprites")},
    {136, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Change the image of the sprite using a file...")},
    {137, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save the image changes into the sprite")},
    {138, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save the image as a file...")},
    {140, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Crop the image to its content")},
    {141, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate the current sprite")},
    {142, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Export the selected sprites...")},
    {143, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import one or more sprites...")},
    {144, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import one or more sprites from another opened project...")},
    {145, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Switch to the sprite used by the current frame")},
    {146, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show the original image")},
    {148, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Show the properties of the image...")},
    {149, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Resize the image...")},
    {151, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Rotate the image...")},
    {152, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Flip the image horizontally")},
    {153, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Flip the image vertically")},
    {154, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Split the RGB channels of the current sprite as separate sprites")},
    {156, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Select the whole image")},
    {157, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Remove the selection")},
    {158, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Invert the selection")},
    {159, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Switch to the palette of the current sprite")},
    {161, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Add one or more sounds")},
    {162, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Delete the selected sounds")},
    {163, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Change the sound using a file...")},
    {164, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Save the sound as WAV...")},
    {165, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Resample the current sound...")},
    {166, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Duplicate the current sound")},
    {167, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play the current sound")},
    {168, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Play the current sound in a loop")},
    {170, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Stop playing the current sound")},
    {171, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Export the selected sounds...")},
    {172, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import one or more sounds...")},
    {173, QT_TRANSLATE_NOOP("Ovra::OvraTranslator", "Import one or more sounds from another opened project...")},
};

constexpr bool tipsSortedAndInRange()
{
    for (std::size_t i = 0; i < std::size(sourceTips); ++i) {
        if (sourceTips[i].id >= OvraTranslator::Count)
            return false;
        if (i > 0 && sourceTips[i - 1].id >= sourceTips[i].id)
            return false;
    }
    return true;
}

static_assert(tipsSortedAndInRange(), "tips must be sorted by id and refer to existing ids");

const char *tipSource(uint id)
{
    const auto end = std::end(sourceTips);
    const auto it = std::lower_bound(std::begin(sourceTips), end, id,
                                     [](const TipEntry &entry, uint key) { return entry.id < key; });
    return (it != end && it->id == id) ? it->source : nullptr;
}

} // namespace

QString Translator::tip(uint id)
{
    return text(id);
}

QString Translator::detail(uint)
{
    return QString();
}

QString OvraTranslator::text(uint id)
{
    if (id >= Count)
        return QString();
    return staticMetaObject.tr(sourceTexts[id], nullptr, -1);
}

QString OvraTranslator::tip(uint id)
{
    if (const char *source = tipSource(id))
        return staticMetaObject.tr(source, nullptr, -1);
    return text(id);
}

Translator *ovraTranslator()
{
    // Local static: constructed on first call and thread-safe. Texts are looked
    // up through tr on every call, so translators installed later still apply.
    static OvraTranslator instance;
    return &instance;
}

} // namespace Ovra
