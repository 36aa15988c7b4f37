// contact-sheet: lays rendered frames out in a grid on one image, each tile
// labelled with its file name, so a sequence can be judged at a glance.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"

namespace {

namespace algo = OIIO::ImageBufAlgo;

struct SheetOptions {
    std::vector<std::string> inputs;
    std::string output;
    int columns = 3;
    int tile_width = 480;
    int gap = 8;
};

bool add_tile(OIIO::ImageBuf &sheet, const std::string &path, int x, int y, int width, int height) {
    OIIO::ImageBuf frame(path);
    if (!frame.read(0, 0, true, OIIO::TypeDesc::FLOAT)) {
        std::fprintf(stderr, "contact-sheet: cannot read '%s': %s\n", path.c_str(), frame.geterror().c_str());
        return false;
    }
    OIIO::ImageBuf tile = algo::resize(frame, "", 0.0f, OIIO::ROI(0, width, 0, height, 0, 1, 0, 3));
    if (tile.has_error() || !algo::paste(sheet, x, y, 0, 0, tile)) {
        std::fprintf(stderr, "contact-sheet: cannot place '%s': %s\n", path.c_str(),
                     tile.has_error() ? tile.geterror().c_str() : sheet.geterror().c_str());
        return false;
    }
    const std::string label = std::filesystem::path(path).filename().string();
    const float white[] = {1.0f, 1.0f, 1.0f};
    // Labels are a help, not a must: a machine without the font gets none.
    for (const char *font : {"DejaVuSans", ""})
        if (algo::render_text(sheet, x + 6, y + height - 8, label, 16, font, white)) break;
    sheet.geterror();  // forget a missing font
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app("Lays images out in a grid on one image, in the order given, each labelled with its file name.");
    app.name("contact-sheet");
    SheetOptions options;
    app.add_option("inputs", options.inputs, "Images to lay out, left to right, top to bottom")->required();
    app.add_option("-o,--output", options.output, "The sheet to write; the extension picks the format")->required();
    app.add_option("--columns", options.columns, "Tiles a row")->capture_default_str()->check(CLI::Range(1, 64));
    app.add_option("--tile-width", options.tile_width, "Width of a tile in pixels; heights keep each frame's shape")
        ->capture_default_str()
        ->check(CLI::Range(16, 4096));
    CLI11_PARSE(app, argc, argv);

    OIIO::ImageSpec first;
    {
        OIIO::ImageBuf probe(options.inputs.front());
        if (!probe.init_spec(options.inputs.front(), 0, 0)) {
            std::fprintf(stderr, "contact-sheet: cannot read '%s': %s\n", options.inputs.front().c_str(),
                         probe.geterror().c_str());
            return 1;
        }
        first = probe.spec();
    }
    const int tile_height = std::max(1, int(double(options.tile_width) * first.height / first.width + 0.5));
    const int count = int(options.inputs.size());
    const int columns = std::min(options.columns, count);
    const int rows = (count + columns - 1) / columns;
    const int gap = options.gap;
    OIIO::ImageSpec spec(gap + columns * (options.tile_width + gap), gap + rows * (tile_height + gap), 3,
                         OIIO::TypeDesc::FLOAT);
    OIIO::ImageBuf sheet(spec);
    const float background[] = {0.12f, 0.12f, 0.12f};
    algo::fill(sheet, background);

    bool ok = true;
    for (int i = 0; i < count; ++i) {
        const int x = gap + (i % columns) * (options.tile_width + gap);
        const int y = gap + (i / columns) * (tile_height + gap);
        ok = add_tile(sheet, options.inputs[size_t(i)], x, y, options.tile_width, tile_height) && ok;
    }
    try {
        sparkhost::AtomicFile file(options.output);
        if (!sheet.write(file.temporary_path(), OIIO::TypeDesc::UINT8)) {
            std::fprintf(stderr, "contact-sheet: cannot write '%s': %s\n", options.output.c_str(),
                         sheet.geterror().c_str());
            return 1;
        }
        file.commit();
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "contact-sheet: %s\n", error.what());
        return 1;
    }
    return ok ? 0 : 1;
}
