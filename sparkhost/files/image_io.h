// Reading and writing host frames as image files with OpenImageIO. Files are
// stored top row first; frames keep the bottom row first, so both directions
// flip the rows.
//
// OpenImageIO lives in a module of its own (image_codec.h), loaded the first
// time a file is read or written: its libraries take longer to load than a
// frame takes to render, and a program that never touches a file (or stops
// at a bad argument) should not wait for them. preload_image_io() starts
// loading it on a thread of its own; the first call that needs it waits for
// that. A module that cannot be loaded makes those calls throw Error naming it.
#pragma once

#include <string>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/frame.h"

namespace sparkhost {

// Starts loading the image I/O module in the background; returns at once.
// Does nothing once it is loaded or loading.
void preload_image_io();
// Waits until the module is loaded. Throws Error when it cannot be.
void require_image_io();

struct ImageSize {
    int width = 0;
    int height = 0;
};

// The size of an image file without reading its pixels. Throws Error.
ImageSize probe_image(const std::string &path);

// Reads the first three channels (a one- or two-channel image is grey) at
// the given depth, rounding to the nearest value. Throws Error.
Frame read_image(const std::string &path, Depth depth);

// Writes RGB in the format the extension names: 8 bits a channel for 8-bit
// frames, 16 for 12-bit frames; EXR gets half floats for 8-bit frames and
// full floats for 12-bit ones, since half floats cannot hold 12 bits exactly.
// `compression` is the file's "compression" attribute ("zip", "zip:1",
// "piz", ...); empty picks default_compression. The file appears whole or
// not at all: it is written under a temporary name and renamed into place.
// Throws Error.
void write_image(const std::string &path, const Frame &frame, const std::string &compression = "");
// The same, written to file's temporary name and left for the caller to
// commit (or abandon): writers that encode several frames at once rename
// them in frame order.
void write_image(AtomicFile &file, const Frame &frame, const std::string &compression = "");

// What a render writes to the path's format by default ("" for formats left
// to their own default): TIFF uncompressed, PIZ EXR, PNG at the fastest
// Deflate level.
std::string default_compression(const std::string &path);
// Throws Error naming the choices unless the path's format knows the
// compression (a name, or zip:LEVEL with LEVEL 0-9).
void check_compression(const std::string &path, const std::string &compression);

// Whether some image format is known for the path's extension.
bool can_write_image(const std::string &path);

}  // namespace sparkhost
