// Input clips from image files.
#include "sparkhost/clips/file_clip.h"

#include "sparkhost/core/error.h"
#include "sparkhost/files/image_io.h"

namespace sparkhost {

namespace {

void require_size(const std::string &path, int width, int height, const FrameFormat &format) {
    if (width != format.width || height != format.height)
        throw Error("'" + path + "' is " + std::to_string(width) + "x" + std::to_string(height) +
                    " but the frame is " + format.size_text());
}

}  // namespace

Frame FileClip::frame(int number, const FrameFormat &format) {
    if (!pattern_.is_sequence() && still_ && still_->format() == format) return *still_;
    std::string path = pattern_.path(number);
    Frame picture = read_image(path, format.depth);
    require_size(path, picture.width(), picture.height(), format);
    if (!pattern_.is_sequence()) still_ = picture;
    return picture;
}

void FileClip::fill(int number, const FrameFormat &format, Frame &into) {
    if (!pattern_.is_sequence() && still_ && still_->format() == format) {
        into.assign(*still_);
        return;
    }
    into = frame(number, format);
}

void FileClip::check(int first, int last, const FrameFormat &format) {
    if (!pattern_.is_sequence()) first = last = 0;
    for (int number = first; number <= last; ++number) {
        std::string path = pattern_.path(number);
        ImageSize size = probe_image(path);
        require_size(path, size.width, size.height, format);
    }
}

}  // namespace sparkhost
