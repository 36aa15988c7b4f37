// Setup files: every control's value and animation curve as JSON, saved and
// restored by the host for the plug-in and for the render tool.
#ifndef SPARKHOST_SETUP_FILE_H
#define SPARKHOST_SETUP_FILE_H

#include <stdexcept>
#include <string>

#include "sparkhost/controls/controls.h"

namespace sparkhost {

class SetupError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The file holds {"format": "sparkhost-setup", "version": 1, "controls":
// [...]}, one entry per control: "number", "kind", "title" (the control's
// name), "value" (or "text" for strings, nothing for push buttons) and an
// optional "curve" of [frame, value] pairs.
constexpr const char *kSetupFormat = "sparkhost-setup";
constexpr int kSetupVersion = 1;

// Throw SetupError naming the file and the problem. Loading reads and checks
// the whole file before it changes anything: a refused file leaves every
// value and curve as it was. Controls the file does not list keep their
// state; a listed control without a curve loses its curve. Loading calls no
// callbacks.
void save_setup(const std::string &path, ControlTable &controls);
void load_setup(const std::string &path, ControlTable &controls);
// On the registered controls; SetupError when none are registered.
void save_setup(const std::string &path);
void load_setup(const std::string &path);

// The message of the last failure of sparkLoadSetup or sparkSaveSetup
// (also reported through sparkError), empty after a success.
std::string last_setup_error();

}  // namespace sparkhost

#endif  // SPARKHOST_SETUP_FILE_H
