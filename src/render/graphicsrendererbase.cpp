#include "graphicsrendererbase.h"

namespace Ovra {

GraphicsRendererBase::GraphicsRendererBase() = default;

GraphicsRendererBase::~GraphicsRendererBase() = default;

} // namespace Ovra
