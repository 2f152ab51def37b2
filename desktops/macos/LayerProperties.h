#pragma once

#include "motion/Animation.h"
#include "motion/Layer.h"

#import <QuartzCore/QuartzCore.h>

// The values of layers and animations as Core Animation's; stateless.
namespace rb {

// The class of CALayer that shows this kind of content.
Class nativeClass(const LayerContent& content);
// Writes every property. The layer is of the content's class.
void setProperties(CALayer* native, const LayerModel& model);

// One property animation, or a group. `native` gives the time space of a begin time.
CAAnimation* nativeAnimation(const Animation& animation, CALayer* native);

} // namespace rb
