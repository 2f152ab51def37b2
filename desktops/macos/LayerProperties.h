#pragma once

#include "motion/Animation.h"
#include "motion/Layer.h"

#import <QuartzCore/QuartzCore.h>

#include <optional>

// The values of layers and animations as Core Animation's; stateless.
namespace rb {

// The class of CALayer that shows this kind of content.
Class nativeClass(const LayerContent& content);
// Writes every property. The layer is of the content's class.
void setProperties(CALayer* native, const LayerModel& model);

// One property animation, or a group. `begin` is a media time, converted into the time of `native`; without one it
// begins when the turn ends.
CAAnimation* nativeAnimation(const Animation& animation, std::optional<double> begin, CALayer* native);

} // namespace rb
