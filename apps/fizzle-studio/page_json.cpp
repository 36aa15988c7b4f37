// Controls, overlays and pictures as the page takes them.
#include "page_json.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "render/control_options.h"

using sparkhost::ControlKind;
using nlohmann::json;

namespace {

// Controls sit on a page in numbered slots from the page's first number.
constexpr int kFirstPageNumber = 6;
constexpr int kSlotsPerPage = 29;

std::string colour_text(uint32_t word) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", word & 0xFF, (word >> 8) & 0xFF, (word >> 16) & 0xFF);
    return text;
}

double step_of(const sparkhost::Control &control) {
    if (control.kind() == ControlKind::Float) {
        const float step = static_cast<const SparkFloatStruct *>(control.structure())->Increment;
        return step > 0 ? step : 0;
    }
    if (control.kind() == ControlKind::Int) {
        const int step = static_cast<const SparkIntStruct *>(control.structure())->Increment;
        return step > 0 ? step : 1;
    }
    return 1;
}

const char *mode_name(GLenum mode) {
    switch (mode) {
    case GL_LINES: return "lines";
    case GL_LINE_STRIP: return "strip";
    case GL_POLYGON: return "polygon";
    default: return "points";
    }
}

int channel(float value) { return value <= 0 ? 0 : value >= 1 ? 255 : int(value * 255.0f + 0.5f); }

// A disabled slider keeps its value as both ends of its range.
bool frozen(const sparkhost::Control &control) {
    if (control.kind() != ControlKind::Float && control.kind() != ControlKind::Int) return false;
    const std::optional<sparkhost::ValueRange> range = control.range();
    return range && range->min >= range->max;
}

}  // namespace

json control_json(const sparkhost::Control &control, bool shown) {
    json item = {{"number", control.number()},
                 {"page", control.page()},
                 {"slot", control.page() < 0 ? control.number() : control.number() - kFirstPageNumber - control.page() * kSlotsPerPage},
                 {"kind", sparkhost::kind_name(control.kind())},
                 {"name", control.name()},
                 {"title", control.title()},
                 {"hidden", !shown},
                 {"enabled", !frozen(control)}};
    switch (control.kind()) {
    case ControlKind::Float:
    case ControlKind::Int:
        item["value"] = control.value();
        item["min"] = control.range()->min;
        item["max"] = control.range()->max;
        item["step"] = step_of(control);
        break;
    case ControlKind::Boolean:
    case ControlKind::Pup: item["value"] = control.value(); break;
    case ControlKind::Color: item["value"] = colour_text(uint32_t(control.value())); break;
    case ControlKind::String: item["value"] = control.text(); break;
    case ControlKind::Push: break;
    }
    if (control.kind() == ControlKind::Pup) item["entries"] = entry_names(control);
    return item;
}

json overlay_json(const std::vector<sparkhost::GlPrimitive> &primitives) {
    json list = json::array();
    for (const sparkhost::GlPrimitive &primitive : primitives) {
        char colour[8];
        std::snprintf(colour, sizeof colour, "#%02x%02x%02x", channel(primitive.colour.r), channel(primitive.colour.g),
                      channel(primitive.colour.b));
        json points = json::array();
        // A hundredth of a pixel is finer than any zoom shows, and keeps the answer short.
        for (const sparkhost::GlVertex &vertex : primitive.vertices) {
            points.push_back(std::round(double(vertex.x) * 100.0) / 100.0);
            points.push_back(std::round(double(vertex.y) * 100.0) / 100.0);
        }
        list.push_back({{"mode", mode_name(primitive.mode)}, {"colour", colour}, {"points", std::move(points)}});
    }
    return list;
}

std::vector<uint8_t> rgb_top_down(const sparkhost::Frame &frame) {
    const int width = frame.width(), height = frame.height();
    const size_t row = size_t(width) * 3;
    std::vector<uint8_t> rgb(row * size_t(height));
    const bool deep = frame.format().depth == sparkhost::Depth::Bits12;
    for (int y = 0; y < height; ++y) {
        const uint8_t *source = frame.data() + frame.format().row_bytes() * size_t(height - 1 - y);
        uint8_t *target = rgb.data() + size_t(y) * row;
        if (!deep) {
            std::memcpy(target, source, row);
            continue;
        }
        for (size_t i = 0; i < row; ++i) {
            uint16_t word;
            std::memcpy(&word, source + i * 2, 2);
            target[i] = uint8_t(word >> 8);
        }
    }
    return rgb;
}
