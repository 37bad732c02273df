#pragma once

#include "map/overlay/WQMask.h"

#include <cairo.h>
#include <memory>

/// cairo's view of a mask that is being drawn: pixels of one byte, y down.
class WQMaskSurface {
  public:
    /// A surface for the pixels of `bounds`, whose coverage is ignored. Without pixels it can still
    /// measure a path.
    explicit WQMaskSurface(WQMask bounds = {});

    /// Its origin is the corner between the mask's pixel (0, 0) and those north and west of it.
    cairo_t *context() const { return _context.get(); }

    /// What was drawn; empty, and logged, where cairo failed.
    std::shared_ptr<const WQMask> finish();

    /// An empty mask in place of one that cannot be drawn; the first time, that is logged.
    [[nodiscard]] static std::shared_ptr<const WQMask> lackOfMask(const char *reason);

  private:
    struct Free {
        void operator()(cairo_surface_t *surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t *context) const { cairo_destroy(context); }
    };

    WQMask _bounds;
    std::unique_ptr<cairo_surface_t, Free> _surface;
    std::unique_ptr<cairo_t, Free> _context;
};
