#pragma once

#include "motion/Layer.h"

#include <QColor>
#include <QImage>
#include <memory>
#include <string>

// Pictures compared with references that a person has looked at.
namespace rb {

// What may differ, for all pictures: other versions of the font rasteriser shade a few edges differently.
struct GoldenTolerance {
    int channel = 24;      // a pixel differs when one of its channels (0…255) is further off than this …
    double pixels = 0.002; // … and this share of all pixels may differ.
};
inline constexpr GoldenTolerance goldenTolerance{};

enum class GoldenResult { Matches, Differs, MissingReference, CannotWrite };
enum class GoldenMode { Compare, Accept };

// Compares with references/NAME.png beside this file. A picture that differs is written to the folder `differences`
// of the build: reference, picture and, in red, where they differ. Accept makes the picture the reference.
GoldenResult checkGolden(const QImage& picture, const std::string& name, GoldenMode mode = GoldenMode::Compare);

// Fails the running test unless the picture matches; with ROOKBAY_ACCEPT_GOLDEN=1 in the environment it becomes the
// reference instead.
void expectGolden(const QImage& picture, const std::string& name);

// A stage for layers: put them on `root` (which fills it), then take its picture in front of a backdrop.
class GoldenScene {
public:
    GoldenScene(double width, double height, const QColor& backdrop);

    const std::shared_ptr<Layer>& root() const { return root_; }
    // A sublayer of the root with that frame.
    std::shared_ptr<Layer> add(const Rect& frame) const { return addTo(*root_, frame); }
    static std::shared_ptr<Layer> addTo(Layer& superlayer, const Rect& frame);

    QImage picture(double pixelsPerPoint) const;
    // At 1 and at 2 pixels per point, as NAME@1x and NAME@2x.
    void expect(const std::string& name) const;

private:
    std::shared_ptr<Layer> root_ = Layer::create();
    QColor backdrop_;
};

} // namespace rb
