// picture.cpp: makes the canvas of a format and collects the bytes that it becomes.
#include "picture.h"

#include "drawing.h"

#include <memory>
#include <new>

#include <cairo-svg.h>
#include <fontconfig/fontconfig.h>

namespace kelhost {

namespace {

constexpr long long most_pixels = 64LL * 1024 * 1024; // of a PNG: a quarter of a gigabyte while it is drawn

struct Released {
    void operator()(cairo_surface_t *surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t *canvas) const { cairo_destroy(canvas); }
};

// The libraries keep fonts for further pictures. There are none: this gives them back.
struct FontCache {
    FontCache() = default;
    ~FontCache() {
        cairo_debug_reset_static_data();
        FcFini();
    }
    FontCache(const FontCache &) = delete;
    FontCache &operator=(const FontCache &) = delete;
};

using Surface = std::unique_ptr<cairo_surface_t, Released>;

// No exception may pass through the library, which is C.
cairo_status_t append(void *bytes, const unsigned char *data, unsigned length) noexcept {
    try {
        static_cast<std::string *>(bytes)->append(reinterpret_cast<const char *>(data), length);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc &) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

Surface make_surface(PictureFormat format, int width, int height, std::string &bytes) {
    if (format == PictureFormat::png) return Surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    Surface surface(cairo_svg_surface_create_for_stream(append, &bytes, width, height));
    cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
    return surface;
}

cairo_status_t draw(cairo_surface_t *surface, const DisplayList &list, const PictureStyle &style) {
    const std::unique_ptr<cairo_t, Released> canvas(cairo_create(surface));
    cairo_save(canvas.get());
    cairo_scale(canvas.get(), style.scale, style.scale);
    draw_screen(canvas.get(), list);
    cairo_restore(canvas.get());
    if (style.outline) draw_outlines(canvas.get(), list, style.scale);
    return cairo_status(canvas.get());
}

// An SVG file is written out as the surface is finished.
cairo_status_t finish(cairo_surface_t *surface, PictureFormat format, std::string &bytes) {
    if (format == PictureFormat::png) return cairo_surface_write_to_png_stream(surface, append, &bytes);
    cairo_surface_finish(surface);
    return cairo_surface_status(surface);
}

} // namespace

std::optional<std::string> draw_picture(const DisplayList &list, PictureFormat format, const PictureStyle &style,
                                        std::string &fault) {
    const int width = list.width * style.scale;
    const int height = list.height * style.scale;
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + " pixels";
    if (const long long pixels = static_cast<long long>(width) * height;
        format == PictureFormat::png && pixels > most_pixels) {
        fault = "a picture of " + size + " is too large: found " + std::to_string(pixels) + " pixels, expected at most "
                + std::to_string(most_pixels) + "; an SVG file has no such bound";
        return std::nullopt;
    }
    const FontCache cache;
    std::string bytes; // outlives the surface, which writes to it
    const Surface surface = make_surface(format, width, height, bytes);
    cairo_status_t status = draw(surface.get(), list, style);
    if (status == CAIRO_STATUS_SUCCESS) status = finish(surface.get(), format, bytes);
    if (status == CAIRO_STATUS_SUCCESS) return bytes;
    fault = "a picture of " + size + " cannot be drawn: " + cairo_status_to_string(status);
    return std::nullopt;
}

} // namespace kelhost
