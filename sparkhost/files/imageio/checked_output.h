// A file the image writers write through, checking every write. Encoders
// differ in what they do with a failed write (some carry on and report
// success, libjpeg ends the process), so each write is taken as done and
// the first failure is kept for the caller to report once the encoder has
// finished: a frame that did not reach the disk whole is never committed.
#pragma once

#include <OpenImageIO/filesystem.h>

#include <string>

namespace sparkhost {

class CheckedOutput : public OIIO::Filesystem::IOProxy {
public:
    // Creates (or empties) the file; failure() says when that failed.
    explicit CheckedOutput(const std::string &path);
    ~CheckedOutput() override;
    CheckedOutput(const CheckedOutput &) = delete;
    CheckedOutput &operator=(const CheckedOutput &) = delete;

    const char *proxytype() const override { return "sparkhost-checked"; }
    size_t write(const void *data, size_t size) override;
    size_t pwrite(const void *data, size_t size, int64_t offset) override;
    size_t read(void *data, size_t size) override;
    size_t pread(void *data, size_t size, int64_t offset) override;
    size_t size() const override { return size_t(end_); }

    // Closes the file and returns the first problem (empty when every write
    // and the close succeeded).
    std::string finish();
    const std::string &failure() const { return failure_; }

private:
    void fail(int error);

    int fd_ = -1;
    int64_t end_ = 0;
    std::string failure_;
};

}  // namespace sparkhost
