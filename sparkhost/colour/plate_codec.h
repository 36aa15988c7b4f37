// The table of functions the plate module exports (plate_io.h loads it).
#pragma once

#include <memory>
#include <string>

#include "sparkhost/colour/plate_io.h"

namespace sparkhost {

// Bumped whenever the table changes, so a stale module is refused.
constexpr int kPlateCodecVersion = 2;

struct PlateCodec {
    int version;
    PlateInfo (*probe)(const std::string &path);
    PlateImage (*read)(const std::string &path);
    void (*write)(AtomicFile &file, const PlateImage &image, SampleType type, const std::string &compression);
    void (*round_to_type)(float *samples, std::size_t count, SampleType type);
    bool (*can_store)(const std::string &path, SampleType type);
    std::shared_ptr<const ColourConfig> (*open_config)(const std::string &path);
};

}  // namespace sparkhost

extern "C" const sparkhost::PlateCodec *sparkhost_plate_codec();
#define SPARKHOST_PLATE_CODEC_SYMBOL "sparkhost_plate_codec"
