#include "editors/animation/timeline.h"

namespace Ovra {

TimeLine::~TimeLine() = default;

} // namespace Ovra
