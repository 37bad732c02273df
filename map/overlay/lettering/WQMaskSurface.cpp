#include "map/overlay/lettering/WQMaskSurface.h"

#include "io/ZPSystemLog.h"

#include <algorithm>
#include <mutex>

WQMaskSurface::WQMaskSurface(WQMask bounds)
    : _bounds(std::move(bounds)),
      _surface(cairo_image_surface_create(CAIRO_FORMAT_A8, _bounds.width, _bounds.height)),
      _context(cairo_create(_surface.get())) {
    cairo_translate(_context.get(), -_bounds.firstColumn, -_bounds.firstRow);
}

std::shared_ptr<const WQMask> WQMaskSurface::lackOfMask(const char *reason) {
    // Where memory is short, this is not the only part.
    static std::once_flag said;
    std::call_once(
        said, [reason] { ZPLog("Error: parts of the map's overlay cannot be drawn: %s", reason); });
    return std::make_shared<const WQMask>();
}

std::shared_ptr<const WQMask> WQMaskSurface::finish() {
    cairo_surface_flush(_surface.get());
    if (const cairo_status_t status = cairo_status(_context.get()); status != CAIRO_STATUS_SUCCESS)
        return lackOfMask(cairo_status_to_string(status));
    auto mask = std::make_shared<WQMask>(_bounds);
    const auto width = static_cast<std::size_t>(mask->width);
    mask->coverage.resize(width * static_cast<std::size_t>(mask->height));
    const unsigned char *source = cairo_image_surface_get_data(_surface.get());
    const int stride = cairo_image_surface_get_stride(_surface.get());
    for (auto row = mask->coverage.begin(); row != mask->coverage.end();
         row += mask->width, source += stride)
        std::copy_n(source, width, row);
    return mask;
}
