#ifndef PHOTOLIB_SAMPLE_SCENES_H
#define PHOTOLIB_SAMPLE_SCENES_H

#include "sample/library_plan.h"

#include <QImage>

namespace sample {

/// Paints what the asset shows, upright, plan.width x plan.height pixels, 32-bit RGB. Each
/// scene seed gives another picture. `phase`, in thousandths, moves what moves in the scene:
/// for frames of a burst or of a film.
QImage paintScene(const AssetPlan &plan, int phase);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_SCENES_H
