// Turns recorded GL primitives into pictures: SVG text, or pixels over an RGB frame.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <ostream>
#include <string>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/viewer/gl_recorder.h"

namespace sparkhost {

namespace {

int to_byte(float c) {
    if (!(c > 0.0f)) return 0;
    if (c >= 1.0f) return 255;
    return static_cast<int>(std::lround(c * 255.0f));
}

std::string svg_colour(const GlColour &c) {
    char text[32];
    std::snprintf(text, sizeof text, "rgb(%d,%d,%d)", to_byte(c.r), to_byte(c.g), to_byte(c.b));
    return text;
}

std::string svg_point(const GlVertex &v, int height) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f,%.3f", v.x, height - v.y);
    return text;
}

// Writes the pixels of one RGB buffer; rows are addressed bottom-up.
class Canvas {
public:
    Canvas(uint8_t *rgb, int width, int height, RowOrder order)
        : rgb_(rgb), width_(width), height_(height), order_(order) {}

    void Plot(long x, long y, const uint8_t colour[3]) {
        if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
        long row = order_ == RowOrder::BottomFirst ? y : height_ - 1 - y;
        std::memcpy(rgb_ + (static_cast<size_t>(row) * width_ + x) * 3, colour, 3);
    }

    // Steps along the longer axis and lights the pixel under each sample;
    // a zero-length segment draws nothing, as in OpenGL. The segment is
    // first clipped to the buffer (with a pixel to spare) so far-away ends
    // cost nothing.
    void Line(GlVertex a, GlVertex b, const uint8_t colour[3]) {
        double x0 = a.x, y0 = a.y, dx = double(b.x) - a.x, dy = double(b.y) - a.y;
        if (!(std::max(std::fabs(dx), std::fabs(dy)) > 0.0)) return;
        double enter = 0.0, leave = 1.0;
        const double p[4] = {-dx, dx, -dy, dy};
        const double q[4] = {x0 + 1.0, width_ + 1.0 - x0, y0 + 1.0, height_ + 1.0 - y0};
        for (int i = 0; i < 4; ++i) {
            if (p[i] == 0.0) {
                if (q[i] < 0.0) return;
                continue;
            }
            double t = q[i] / p[i];
            if (p[i] < 0.0) enter = std::max(enter, t);
            else leave = std::min(leave, t);
        }
        if (!(enter <= leave)) return;
        double longest = std::max(std::fabs(dx), std::fabs(dy)) * (leave - enter);
        long steps = std::max(1L, static_cast<long>(std::ceil(longest)));
        for (long i = 0; i <= steps; ++i) {
            double t = enter + (leave - enter) * double(i) / steps;
            Plot(static_cast<long>(std::floor(x0 + t * dx)),
                 static_cast<long>(std::floor(y0 + t * dy)), colour);
        }
    }

    // Even-odd fill of the pixels whose centres lie inside the polygon.
    void Polygon(const std::vector<GlVertex> &v, const uint8_t colour[3]) {
        if (v.size() < 3) return;
        float low = v[0].y, high = v[0].y;
        for (const GlVertex &p : v) {
            low = std::min(low, p.y);
            high = std::max(high, p.y);
        }
        long first = std::max(0L, static_cast<long>(std::floor(low)));
        long last = std::min(static_cast<long>(height_) - 1, static_cast<long>(std::ceil(high)));
        std::vector<double> crossings;
        for (long y = first; y <= last; ++y) {
            double centre = y + 0.5;
            crossings.clear();
            for (size_t i = 0; i < v.size(); ++i) {
                const GlVertex &p = v[i], &q = v[(i + 1) % v.size()];
                if ((p.y <= centre) == (q.y <= centre)) continue;
                crossings.push_back(p.x + (centre - p.y) * (double(q.x) - p.x) / (double(q.y) - p.y));
            }
            std::sort(crossings.begin(), crossings.end());
            for (size_t i = 0; i + 1 < crossings.size(); i += 2) {
                long from = std::max(0L, static_cast<long>(std::ceil(crossings[i] - 0.5)));
                long to = std::min(static_cast<long>(width_) - 1,
                                   static_cast<long>(std::ceil(crossings[i + 1] - 0.5)) - 1);
                for (long x = from; x <= to; ++x) Plot(x, y, colour);
            }
        }
    }

private:
    uint8_t *rgb_;
    int width_, height_;
    RowOrder order_;
};

}  // namespace

void WriteSvg(std::ostream &out, const std::vector<GlPrimitive> &primitives, int width,
              int height, const GlColour *background) {
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
        << height << "\" viewBox=\"0 0 " << width << ' ' << height << "\">\n";
    if (background)
        out << "<rect width=\"" << width << "\" height=\"" << height << "\" fill=\""
            << svg_colour(*background) << "\"/>\n";
    for (const GlPrimitive &p : primitives) {
        const std::string colour = svg_colour(p.colour);
        const std::vector<GlVertex> &v = p.vertices;
        switch (p.mode) {
        case GL_POINTS:
            for (const GlVertex &q : v)
                out << "<rect x=\"" << std::floor(q.x) << "\" y=\"" << height - std::floor(q.y) - 1
                    << "\" width=\"1\" height=\"1\" fill=\"" << colour << "\"/>\n";
            break;
        case GL_LINES:
            for (size_t i = 0; i + 1 < v.size(); i += 2)
                out << "<polyline points=\"" << svg_point(v[i], height) << ' '
                    << svg_point(v[i + 1], height) << "\" fill=\"none\" stroke=\"" << colour
                    << "\"/>\n";
            break;
        case GL_LINE_STRIP:
        case GL_POLYGON: {
            if (v.empty()) break;
            out << (p.mode == GL_POLYGON ? "<polygon" : "<polyline") << " points=\"";
            for (size_t i = 0; i < v.size(); ++i) out << (i ? " " : "") << svg_point(v[i], height);
            if (p.mode == GL_POLYGON)
                out << "\" fill=\"" << colour << "\" stroke=\"none\"/>\n";
            else
                out << "\" fill=\"none\" stroke=\"" << colour << "\"/>\n";
            break;
        }
        default:
            out << "<!-- unsupported primitive mode " << p.mode << " -->\n";
        }
    }
    out << "</svg>\n";
}

bool WriteSvgFile(const std::string &path, const std::vector<GlPrimitive> &primitives,
                  int width, int height, const GlColour *background) {
    try {
        AtomicFile svg(path);
        std::ofstream file(svg.temporary_path());
        if (!file) {
            std::fprintf(stderr, "cannot write SVG file %s: %s\n", path.c_str(), std::strerror(errno));
            return false;
        }
        WriteSvg(file, primitives, width, height, background);
        file.close();
        if (!file) {
            std::fprintf(stderr, "error while writing SVG file %s\n", path.c_str());
            return false;
        }
        svg.commit();
        return true;
    } catch (const Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return false;
    }
}

void Rasterise(const std::vector<GlPrimitive> &primitives, uint8_t *rgb, int width, int height,
               RowOrder order) {
    if (!rgb || width <= 0 || height <= 0) return;
    Canvas canvas(rgb, width, height, order);
    for (const GlPrimitive &p : primitives) {
        const uint8_t colour[3] = {static_cast<uint8_t>(to_byte(p.colour.r)),
                                   static_cast<uint8_t>(to_byte(p.colour.g)),
                                   static_cast<uint8_t>(to_byte(p.colour.b))};
        const std::vector<GlVertex> &v = p.vertices;
        switch (p.mode) {
        case GL_POINTS:
            for (const GlVertex &q : v)
                canvas.Plot(static_cast<long>(std::floor(q.x)), static_cast<long>(std::floor(q.y)),
                            colour);
            break;
        case GL_LINES:
            for (size_t i = 0; i + 1 < v.size(); i += 2) canvas.Line(v[i], v[i + 1], colour);
            break;
        case GL_LINE_STRIP:
            for (size_t i = 0; i + 1 < v.size(); ++i) canvas.Line(v[i], v[i + 1], colour);
            break;
        case GL_POLYGON:
            canvas.Polygon(v, colour);
            break;
        default:
            break;
        }
    }
}

}  // namespace sparkhost
