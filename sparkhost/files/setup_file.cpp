// Reads and writes setup files, and the setup host functions.
#include "sparkhost/files/setup_file.h"

#include "sparkhost/controls/text_match.h"

#include <cctype>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/regular_file.h"

namespace sparkhost {
namespace {

using nlohmann::json;

// A float written as the shortest decimal that reads back as the same
// float, so that 0.05f is stored as 0.05 and not 0.05000000074505806.
double short_decimal(float value) {
    char text[32];
    for (int precision = 6; precision <= 9; ++precision) {
        std::snprintf(text, sizeof text, "%.*g", precision, static_cast<double>(value));
        if (std::strtof(text, nullptr) == value) break;
    }
    return std::strtod(text, nullptr);
}

// A value quoted in a message: whole when short, cut when long, so that a
// message stays one readable line.
std::string excerpt(const json &value) {
    constexpr size_t kLongest = 60;
    std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
    return text.size() <= kLongest ? text : text.substr(0, kLongest) + "...";
}

// Deeper than any setup needs (a curve key sits at depth 4).
constexpr int kDeepest = 16;
// Far beyond any setup written by a host: refused rather than read whole.
constexpr std::uintmax_t kLargestFile = 64u << 20;

std::string describe(const json &value) {
    if (value.is_string()) return "text";
    if (value.is_boolean()) return "true/false";
    if (value.is_number()) return "a number";
    if (value.is_array()) return "a list";
    if (value.is_object()) return "an object";
    return "null";
}

// One control's new state, checked and ready to write.
struct PlannedControl {
    Control *control = nullptr;
    double value = 0.0;
    bool has_value = false;
    std::string text;
    bool has_text = false;
    Curve curve;
};

class SetupReader {
public:
    SetupReader(const std::string &path, ControlTable &controls) : path_(path), controls_(controls) {}

    std::vector<PlannedControl> read(const std::string &content) {
        json document;
        try {
            document = parse(content);
        } catch (const json::exception &error) {
            std::string what = error.what();
            size_t bracket = what.find("] ");
            fail("not valid JSON: " + (bracket == std::string::npos ? what : what.substr(bracket + 2)));
        }
        if (!document.is_object()) fail("the file must hold a JSON object, not " + describe(document));
        for (const auto &[key, value] : document.items()) {
            if (key != "format" && key != "version" && key != "controls") fail("unknown entry \"" + key + "\"");
            (void)value;
        }
        if (!document.contains("format") || document["format"] != kSetupFormat)
            fail(std::string("not a setup file: \"format\" must be \"") + kSetupFormat + "\"");
        const json &version = document.value("version", json());
        if (!version.is_number_integer()) fail("\"version\" must be a whole number");
        if (version.get<long long>() != kSetupVersion)
            fail("setup version " + excerpt(version) + " is not supported (this host reads version " +
                 std::to_string(kSetupVersion) + ")");
        if (!document.contains("controls") || !document["controls"].is_array())
            fail("\"controls\" must be a list");

        std::vector<PlannedControl> plan;
        std::set<int> seen;
        for (const json &entry : document["controls"]) {
            plan.push_back(read_control(entry));
            if (!seen.insert(plan.back().control->number()).second)
                fail("control " + std::to_string(plan.back().control->number()) + " is listed twice");
        }
        return plan;
    }

    [[noreturn]] void fail(const std::string &problem) const {
        throw SetupError("setup file \"" + path_ + "\": " + problem);
    }

private:
    // Refuses what the plain parser would take silently (a key given twice,
    // of which it keeps the last) or dangerously (nesting deep enough to
    // exhaust the stack when the document is later walked), in a first pass
    // that builds nothing; only then is the document built. (The parser's
    // own callback form searches the enclosing list each time an object
    // ends, which made a list of n objects cost n squared.)
    json parse(const std::string &content) const {
        StructureCheck check(*this);
        json::sax_parse(content, &check);
        return json::parse(content);
    }

    class StructureCheck : public nlohmann::json_sax<json> {
    public:
        explicit StructureCheck(const SetupReader &reader) : reader_(reader) {}
        bool null() override { return true; }
        bool boolean(bool) override { return true; }
        bool number_integer(number_integer_t) override { return true; }
        bool number_unsigned(number_unsigned_t) override { return true; }
        bool number_float(number_float_t, const string_t &) override { return true; }
        bool string(string_t &) override { return true; }
        bool binary(binary_t &) override { return true; }
        bool start_object(std::size_t) override {
            open();
            keys_.emplace_back();
            return true;
        }
        bool key(string_t &name) override {
            if (!keys_.back().insert(name).second)
                reader_.fail("the entry \"" + name + "\" is given twice in one object");
            return true;
        }
        bool end_object() override {
            keys_.pop_back();
            --depth_;
            return true;
        }
        bool start_array(std::size_t) override {
            open();
            return true;
        }
        bool end_array() override {
            --depth_;
            return true;
        }
        // Thrown as json::parse would throw it, to be reported the same way.
        bool parse_error(std::size_t, const std::string &, const nlohmann::detail::exception &error) override {
            throw error;
        }

    private:
        void open() {
            if (++depth_ > kDeepest) reader_.fail("nested more than " + std::to_string(kDeepest) + " levels deep");
        }
        const SetupReader &reader_;
        int depth_ = 0;
        std::vector<std::set<std::string>> keys_;  // of each object being read
    };

    PlannedControl read_control(const json &entry) {
        if (!entry.is_object()) fail("each control must be an object, not " + describe(entry));
        const json &number = entry.value("number", json());
        if (!number.is_number_integer()) fail("a control without a whole \"number\": " + excerpt(entry));
        long long n = number.get<long long>();
        Control *control = (n >= 0 && n <= SPARK_MAX_CONTROL) ? controls_.find(static_cast<int>(n)) : nullptr;
        if (!control) fail("control " + std::to_string(n) + " is not a control of this plug-in");
        std::string where = "control " + std::to_string(n) + " \"" + control->name() + "\"";

        PlannedControl planned;
        planned.control = control;
        for (const auto &[key, value] : entry.items()) {
            if (key == "number") continue;
            if (key == "kind") {
                if (!value.is_string() || value.get<std::string>() != kind_name(control->kind()))
                    fail(where + " is of kind " + kind_name(control->kind()) + ", the file says " + excerpt(value));
            } else if (key == "title") {
                if (!value.is_string() || lower(value.get<std::string>()) != lower(control->name()))
                    fail(where + " is titled \"" + control->name() + "\" here, the file says " + excerpt(value));
            } else if (key == "value") {
                planned.value = read_value(*control, value, where);
                planned.has_value = true;
            } else if (key == "text") {
                if (!value.is_string()) fail(where + ": \"text\" must be text, not " + describe(value));
                std::string problem = control->check_text(value.get<std::string>());
                if (!problem.empty()) fail(problem);
                planned.text = value.get<std::string>();
                planned.has_text = true;
            } else if (key == "curve") {
                planned.curve = read_curve(value, where);
            } else {
                fail(where + ": unknown entry \"" + key + "\"");
            }
        }
        return planned;
    }

    double read_value(const Control &control, const json &value, const std::string &where) const {
        double number;
        if (control.kind() == ControlKind::Boolean && value.is_boolean())
            number = value.get<bool>() ? 1.0 : 0.0;
        else if (value.is_number() && control.has_value())
            number = value.get<double>();
        else if (!control.has_value())
            fail(where + " takes no \"value\"" + (control.kind() == ControlKind::String ? " (use \"text\")" : ""));
        else
            fail(where + ": \"value\" must be a number, not " + describe(value));
        std::string problem = control.check_value(number);
        if (!problem.empty()) fail(problem);
        return number;
    }

    Curve read_curve(const json &keys, const std::string &where) const {
        if (!keys.is_array()) fail(where + ": \"curve\" must be a list of [frame, value] pairs");
        Curve curve;
        for (const json &key : keys) {
            if (!key.is_array() || key.size() != 2 || !key[0].is_number() || !key[1].is_number())
                fail(where + ": curve key " + excerpt(key) + " is not a [frame, value] pair of numbers");
            double frame = key[0].get<double>(), value = key[1].get<double>();
            if (std::fabs(frame) > FLT_MAX || std::fabs(value) > FLT_MAX)
                fail(where + ": curve key " + excerpt(key) + " is too large");
            if (curve.keys().count(static_cast<float>(frame)))
                fail(where + ": the curve has two keys at frame " + excerpt(key[0]));
            curve.set_key(static_cast<float>(frame), static_cast<float>(value));
        }
        return curve;
    }

    std::string path_;
    ControlTable &controls_;
};

json control_entry(const Control &control, const std::map<int, Curve> &curves) {
    json entry = {{"number", control.number()}, {"kind", kind_name(control.kind())}, {"title", control.name()}};
    switch (control.kind()) {
    case ControlKind::Float: entry["value"] = short_decimal(static_cast<float>(control.value())); break;
    case ControlKind::Boolean: entry["value"] = control.value() != 0.0; break;
    case ControlKind::Int:
    case ControlKind::Pup:
    case ControlKind::Color: entry["value"] = static_cast<long long>(control.value()); break;
    case ControlKind::String: entry["text"] = control.text(); break;
    case ControlKind::Push: break;
    }
    auto curve = curves.find(control.number());
    if (curve != curves.end()) {
        json keys = json::array();
        for (const auto &[frame, value] : curve->second.keys())
            keys.push_back({short_decimal(frame), short_decimal(value)});
        entry["curve"] = keys;
    }
    return entry;
}

std::string read_whole_file(const std::string &path) {
    try {
        return read_regular_file(path, kLargestFile);
    } catch (const Error &error) {
        throw SetupError(std::string("setup file: ") + error.what());
    }
}

ControlTable &registered_or_fail(const std::string &path) {
    ControlTable *controls = registered_controls();
    if (!controls) throw SetupError("setup file \"" + path + "\": no plug-in controls are registered with the host");
    return *controls;
}

std::mutex error_mutex;
std::string last_error;

void remember_error(const std::string &message) {
    std::lock_guard<std::mutex> lock(error_mutex);
    last_error = message;
}

// The path in the record, or nothing when the record names no file.
std::string setup_path(const SparkInfoStruct *info, const char *function) {
    if (!info) throw SetupError(std::string(function) + ": no info record");
    size_t length = strnlen(info->SetupPath, SPARK_SETUP_PATH_MAX);
    if (length == SPARK_SETUP_PATH_MAX) throw SetupError(std::string(function) + ": the setup path is not terminated");
    return std::string(info->SetupPath, length);
}

}  // namespace

void save_setup(const std::string &path, ControlTable &controls) {
    std::map<int, Curve> curves = all_curves();
    json entries = json::array();
    for (const Control &control : controls.controls()) entries.push_back(control_entry(control, curves));
    // One control a line, its curve's keys without spaces: indented, a key
    // took five lines and long curves were saved larger than a setup may be
    // to load again.
    std::string text = std::string("{\n  \"format\": ") + json(kSetupFormat).dump() +
                       ",\n  \"version\": " + std::to_string(kSetupVersion) + ",\n  \"controls\": [";
    for (std::size_t i = 0; i < entries.size(); ++i) text += (i ? ",\n    " : "\n    ") + entries[i].dump();
    text += entries.empty() ? "]\n}\n" : "\n  ]\n}\n";
    if (text.size() > kLargestFile)
        throw SetupError("cannot write setup file \"" + path + "\": its " + std::to_string(text.size() >> 20) +
                         " MB would be more than the " + std::to_string(kLargestFile >> 20) +
                         " MB a setup file may be to load again");

    // Written aside and renamed so that a failed save never leaves half a file.
    try {
        AtomicFile file(path);
        file.write(text.data(), text.size());
        file.commit();
    } catch (const Error &error) {
        throw SetupError(std::string("setup file: ") + error.what());
    }
}

void load_setup(const std::string &path, ControlTable &controls) {
    std::vector<PlannedControl> plan = SetupReader(path, controls).read(read_whole_file(path));
    for (PlannedControl &planned : plan) {
        if (planned.has_value) planned.control->set_value(planned.value);
        if (planned.has_text) planned.control->set_text(planned.text);
        set_curve(planned.control->number(), planned.curve);
    }
}

void save_setup(const std::string &path) { save_setup(path, registered_or_fail(path)); }

void load_setup(const std::string &path) { load_setup(path, registered_or_fail(path)); }

std::string last_setup_error() {
    std::lock_guard<std::mutex> lock(error_mutex);
    return last_error;
}

}  // namespace sparkhost

// ---------------------------------------------------------------------------
// Host functions

extern "C" {

// A setup path that names no file yet is the first use of the plug-in:
// nothing to restore, and the later save creates it.
void sparkLoadSetup(SparkInfoStruct *info) {
    sparkhost::remember_error({});
    try {
        std::string path = sparkhost::setup_path(info, "sparkLoadSetup");
        if (path.empty()) return;
        std::error_code error;
        if (!std::filesystem::exists(path, error)) return;
        sparkhost::load_setup(path);
    } catch (const std::exception &error) {
        sparkhost::remember_error(error.what());
        sparkError(error.what());
    }
}

void sparkSaveSetup(SparkInfoStruct *info) {
    sparkhost::remember_error({});
    try {
        std::string path = sparkhost::setup_path(info, "sparkSaveSetup");
        if (path.empty()) return;
        sparkhost::save_setup(path);
    } catch (const std::exception &error) {
        sparkhost::remember_error(error.what());
        sparkError(error.what());
    }
}

}  // extern "C"
