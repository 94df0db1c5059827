// text.cpp: chooses a font and sets lines, letter by letter, without shaping.
#include "text.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <cairo-ft.h>
#include <fontconfig/fontconfig.h>

namespace kelhost {

namespace {

constexpr const char *usual_family = "DejaVu Sans"; // Debian installs it with most things that draw
constexpr FcChar32 replacement = 0xfffd;

struct Letter {
    FcChar32 code = replacement;
    std::size_t bytes = 1; // in the text that it was read from
};

std::string to_utf8(FcChar32 code) {
    FcChar8 bytes[FC_UTF8_MAX_LEN];
    const int length = FcUcs4ToUtf8(code, bytes);
    return std::string(bytes, bytes + length);
}

// Codes that will never be letters; cairo draws nothing at all of a text that has one.
bool is_noncharacter(FcChar32 code) { return (code & 0xfffe) == 0xfffe || (code >= 0xfdd0 && code <= 0xfdef); }

// The first letter of the text; the replacement for what is none, and for a byte that is no UTF-8.
Letter first_letter(std::string_view text) {
    Letter letter;
    const auto *bytes = reinterpret_cast<const FcChar8 *>(text.data());
    FcChar32 code = 0;
    const int length = FcUtf8ToUcs4(bytes, &code, static_cast<int>(std::min<std::size_t>(text.size(), 4)));
    const bool is_letter = length > 0 && (code < 0xd800 || code > 0xdfff) && code <= 0x10ffff
                           && to_utf8(code) == text.substr(0, static_cast<std::size_t>(length));
    if (is_letter) letter = {is_noncharacter(code) ? replacement : code, static_cast<std::size_t>(length)};
    return letter;
}

// What can be set of a text: the letters of each line.
using Line = std::vector<FcChar32>;

std::vector<Line> lines_of(std::string_view text) {
    std::vector<Line> lines(1);
    while (!text.empty()) {
        const Letter letter = first_letter(text);
        text.remove_prefix(letter.bytes);
        if (letter.code == '\n') {
            lines.emplace_back();
        } else {
            lines.back().push_back(letter.code < ' ' || letter.code == 0x7f ? ' ' : letter.code);
        }
    }
    return lines;
}

std::string to_utf8(const Line &line, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += to_utf8(line[i]);
    return text;
}

// The line, or as much of its beginning as fits with an ellipsis.
std::string fitted(cairo_t *canvas, const Line &line, double width) {
    std::string text = to_utf8(line, line.size());
    if (text_width(canvas, text) <= width) return text;
    const auto beginning = [&](std::size_t count) { return to_utf8(line, count) + "…"; };
    std::size_t fits = 0;
    std::size_t too_long = line.size();
    while (fits + 1 < too_long) {
        const std::size_t middle = (fits + too_long) / 2;
        (text_width(canvas, beginning(middle)) <= width ? fits : too_long) = middle;
    }
    return beginning(fits);
}

cairo_font_extents_t font_extents(cairo_t *canvas) {
    cairo_font_extents_t extents;
    cairo_font_extents(canvas, &extents);
    return extents;
}

double start_of_line(double room, const std::string &align) {
    if (align == "center") return room / 2;
    return align == "right" ? room : 0;
}

} // namespace

// Of the families asked for and all others, the one that lacks the fewest of the letters is taken; the usual one when
// it lacks none.
Font::Font(const std::string &letters) {
    FcPattern *const pattern = FcPatternCreate();
    FcCharSet *const needed = FcCharSetCreate();
    for (const Line &line : lines_of(letters))
        for (const FcChar32 code : line) FcCharSetAddChar(needed, code);
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8 *>(usual_family));
    FcPatternAddCharSet(pattern, FC_CHARSET, needed);
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    face_.reset(cairo_ft_font_face_create_for_pattern(pattern));
    FcCharSetDestroy(needed);
    FcPatternDestroy(pattern);
}

void Font::use(cairo_t *canvas, int size) const {
    cairo_font_options_t *const options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(canvas, options);
    cairo_font_options_destroy(options);
    cairo_set_font_face(canvas, face_.get());
    cairo_set_font_size(canvas, size);
}

double text_width(cairo_t *canvas, const std::string &text) {
    cairo_text_extents_t extents;
    cairo_text_extents(canvas, text.c_str(), &extents);
    return extents.x_advance;
}

double line_height(cairo_t *canvas) {
    const cairo_font_extents_t extents = font_extents(canvas);
    return extents.ascent + extents.descent;
}

void draw_text(cairo_t *canvas, const std::string &text, const std::string &align, const Box &box) {
    const std::vector<Line> lines = lines_of(text);
    const double height = line_height(canvas);
    double baseline =
        box.y + (box.height - height * static_cast<double>(lines.size())) / 2 + font_extents(canvas).ascent;
    cairo_rectangle(canvas, box.x, box.y, box.width, box.height);
    cairo_clip(canvas);
    for (const Line &line : lines) {
        const std::string shown = fitted(canvas, line, box.width);
        cairo_move_to(canvas, box.x + start_of_line(box.width - text_width(canvas, shown), align), baseline);
        cairo_show_text(canvas, shown.c_str());
        baseline += height;
    }
}

} // namespace kelhost
