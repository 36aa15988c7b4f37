// overlay-gallery: draws every overlay primitive and widget at zoom 1 and
// zoom 2 through our host's GL recorder and writes the picture as SVG (and
// optionally PNG) so that a person can check how they look.
#include <CLI/CLI.hpp>
#include <OpenImageIO/imageio.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "framework/overlay.h"
#include "framework/overlay_widgets.h"
#include "spark/spark_gl.h"
#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/viewer/gl_recorder.h"

namespace {

const int kCellWidth = 240;   // viewer pixels
const int kCellHeight = 140;
const int kColumns = 4;

struct Exhibit {
    const char *name;
    // Draws inside an overlay whose viewer size is the cell in image units.
    std::function<void(OverlayQv &)> draw;
};

SparkFloatStruct g_records[8] = {};

void yellow(OverlayQv &o) { o.SetColour(65535, 60000, 0, 65535); }

std::vector<Exhibit> exhibits() {
    return {
        {"PIXELS", [](OverlayQv &o) {
             yellow(o);
             for (int i = 0; i < 9; ++i) o.DrawPixel(o.viewer_width * (0.1f + 0.1f * i), o.viewer_height * 0.5f);
         }},
        {"LINE", [](OverlayQv &o) {
             yellow(o);
             o.DrawLine(o.viewer_width * 0.1f, o.viewer_height * 0.2f, o.viewer_width * 0.9f, o.viewer_height * 0.7f);
         }},
        {"HANDLES", [](OverlayQv &o) {
             yellow(o);
             o.DrawHandle(o.viewer_width * 0.3f, o.viewer_height * 0.45f, false);
             o.DrawHandleOutline(o.viewer_width * 0.7f, o.viewer_height * 0.45f);
         }},
        {"DOTTED 10", [](OverlayQv &o) {
             yellow(o);
             o.DrawLineDotted(o.viewer_width * 0.1f, o.viewer_height * 0.2f, o.viewer_width * 0.9f, o.viewer_height * 0.7f, 10);
         }},
        {"ELLIPSE", [](OverlayQv &o) {
             yellow(o);
             o.DrawEllipse(o.viewer_width * 0.5f, o.viewer_height * 0.45f, o.viewer_width * 0.7f, o.viewer_height * 0.5f, 0.0f, 0, 10, 0.0f, 360.0f);
         }},
        {"DOTTED ELLIPSE", [](OverlayQv &o) {
             yellow(o);
             o.DrawEllipse(o.viewer_width * 0.5f, o.viewer_height * 0.45f, o.viewer_width * 0.7f, o.viewer_height * 0.5f, 30.0f, 1, 10, 0.0f, 360.0f);
         }},
        {"ARC 90-270", [](OverlayQv &o) {
             yellow(o);
             o.DrawEllipse(o.viewer_width * 0.5f, o.viewer_height * 0.45f, o.viewer_width * 0.6f, o.viewer_height * 0.6f, 0.0f, 1, 10, 90.0f, 270.0f);
         }},
        {"CROSSHAIRS", [](OverlayQv &o) {
             yellow(o);
             o.DrawCrosshair(o.viewer_width * 0.3f, o.viewer_height * 0.45f, 0);
             o.DrawCrosshair(o.viewer_width * 0.7f, o.viewer_height * 0.45f, 1);
         }},
        {"RECTANGLE", [](OverlayQv &o) {
             yellow(o);
             o.DrawRectangle(o.viewer_width * 0.15f, o.viewer_height * 0.15f, o.viewer_width * 0.85f, o.viewer_height * 0.75f);
         }},
        {"ARROWS", [](OverlayQv &o) {
             yellow(o);
             o.DrawArrow(o.viewer_width * 0.1f, o.viewer_height * 0.2f, o.viewer_width * 0.9f, o.viewer_height * 0.7f);
             o.DrawArrow(o.viewer_width * 0.5f, o.viewer_height * 0.1f, o.viewer_width * 0.5f, o.viewer_height * 0.75f);
         }},
        {"TEXT", [](OverlayQv &o) {
             yellow(o);
             o.DrawText(o.viewer_width * 0.05f, o.viewer_height * 0.7f, "ABCDEFGHIJKLM\nNOPQRSTUVWXYZ\n0123456789\n.,:-+/()=_'!%?");
         }},
        {"CROSSHAIR WIDGET", [](OverlayQv &o) {
             static CrosshairOverlayQv idle, lit;
             idle.Bind(&o, 11, &g_records[0], &g_records[1]);
             idle.SetPosition(0.3f, 0.45f);
             lit.colour[2] = 0;
             lit.style = 1;
             lit.highlighted = 1;
             lit.SetPosition(0.7f, 0.45f);
             o.DrawCrosshairOverlay(&idle);
             o.DrawCrosshairOverlay(&lit);
         }},
        {"LINE WIDGET", [](OverlayQv &o) {
             static LineOverlayQv idle, grabbed;
             idle.SetPoints(0.1f, 0.2f, 0.45f, 0.7f);
             grabbed.colour[0] = 0;
             grabbed.grabbed = 1;
             grabbed.SetPoints(0.55f, 0.7f, 0.9f, 0.2f);
             o.DrawLineOverlay(&idle);
             o.DrawLineOverlay(&grabbed);
         }},
        {"ANGLE WIDGET", [](OverlayQv &o) {
             static AngleOverlayQv angle;
             angle.SetCentre(0.35f, 0.3f);
             angle.SetAngle(60.0f);
             o.DrawAngleOverlay(&angle);
         }},
        {"CIRCLE WIDGET", [](OverlayQv &o) {
             static CircleOverlayQv circle;
             circle.SetCircle(0.45f, 0.45f, 0.2f);
             circle.highlighted = 2;
             o.DrawCircleOverlay(&circle);
         }},
        {"RECTANGLE WIDGET", [](OverlayQv &o) {
             static RectangleOverlayQv rectangle;
             rectangle.SetCorners(0.2f, 0.2f, 0.8f, 0.7f);
             rectangle.grabbed = 1;
             o.DrawRectangleOverlay(&rectangle);
         }},
    };
}

// Draws each exhibit in its cell; one block of rows per zoom.
void draw_gallery(int &width, int &height) {
    const std::vector<Exhibit> all = exhibits();
    const int rows_per_zoom = (static_cast<int>(all.size()) + kColumns - 1) / kColumns;
    const float zooms[] = {1.0f, 2.0f};
    width = kColumns * kCellWidth;
    height = 2 * rows_per_zoom * kCellHeight;
    for (int block = 0; block < 2; ++block) {
        const float zoom = zooms[block];
        for (size_t i = 0; i < all.size(); ++i) {
            int column = static_cast<int>(i) % kColumns;
            int row = block * rows_per_zoom + static_cast<int>(i) / kColumns;
            OverlayQv overlay;
            overlay.SetViewport(static_cast<int>(kCellWidth / zoom), static_cast<int>(kCellHeight / zoom),
                                1.0f, zoom, 1.0f);
            glLoadIdentity();
            glTranslatef(static_cast<float>(column * kCellWidth),
                         static_cast<float>(height - (row + 1) * kCellHeight), 0.0f);
            glScalef(zoom, zoom, 1.0f);
            overlay.SetColour(20000, 20000, 20000, 65535);
            overlay.DrawRectangle(0.5f / zoom, 0.5f / zoom, overlay.viewer_width - 0.5f / zoom,
                                  overlay.viewer_height - 0.5f / zoom);
            overlay.SetColour(45000, 45000, 45000, 65535);
            char label[64];
            std::snprintf(label, sizeof label, "%s X%g", all[i].name, zoom);
            overlay.DrawText(4.0f / zoom, overlay.viewer_height - 16.0f / zoom, label);
            all[i].draw(overlay);
        }
    }
    glFlush();
}

bool write_png(const std::string &path, const std::vector<sparkhost::GlPrimitive> &drawn, int width,
               int height) {
    std::vector<uint8_t> rgb(static_cast<size_t>(width) * height * 3, 24);
    sparkhost::Rasterise(drawn, rgb.data(), width, height, sparkhost::RowOrder::TopFirst);
    auto out = OIIO::ImageOutput::create(path);
    if (!out) {
        std::fprintf(stderr, "cannot write %s: %s\n", path.c_str(), OIIO::geterror().c_str());
        return false;
    }
    OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::UINT8);
    try {
        sparkhost::AtomicFile file(path);
        if (!out->open(file.temporary_path(), spec) || !out->write_image(OIIO::TypeDesc::UINT8, rgb.data()) ||
            !out->close()) {
            std::fprintf(stderr, "cannot write %s: %s\n", path.c_str(), out->geterror().c_str());
            return false;
        }
        file.commit();
        return true;
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return false;
    }
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app{"Draws every overlay primitive and widget at zoom 1 and 2."};
    std::string svg_path = "overlay-gallery.svg", png_path;
    app.add_option("-o,--output", svg_path, "SVG file to write")->capture_default_str();
    app.add_option("--png", png_path, "also rasterise into this image (any format OIIO writes)");
    CLI11_PARSE(app, argc, argv);

    sparkhost::gl_recorder().clear();
    int width = 0, height = 0;
    draw_gallery(width, height);
    const std::vector<sparkhost::GlPrimitive> drawn = sparkhost::gl_recorder().primitives();
    const sparkhost::GlColour background{24 / 255.0f, 24 / 255.0f, 24 / 255.0f};
    if (!sparkhost::WriteSvgFile(svg_path, drawn, width, height, &background)) return 1;
    if (!png_path.empty() && !write_png(png_path, drawn, width, height)) return 1;
    std::printf("%zu primitives, %d x %d: %s%s%s\n", drawn.size(), width, height, svg_path.c_str(),
                png_path.empty() ? "" : ", ", png_path.c_str());
    return 0;
}
