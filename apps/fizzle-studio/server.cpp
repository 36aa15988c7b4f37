// Routes of the studio: static files, then /api/... calls answered in JSON.
#include "server.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "command_line.h"
#include "guarded_server.h"
#include "make_folders.h"
#include "picture_delta.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/setup_file.h"

using nlohmann::json;

namespace {

// Every call the page makes is small; a larger body is refused unread.
constexpr size_t kMaxBody = 64 * 1024;
// The last frame a render or a command line may name: the timeline's own limit.
constexpr int kLastFrame = 1000000;
// Requests waiting for the plug-in at once; later ones are told it is busy.
constexpr int kPluginRequests = 6;
// An existing file a setup is saved over must be one: read at most this much to tell.
constexpr uint64_t kLargestSetup = 64u << 20;

// A refused request: its status and the one line the page shows.
struct Refusal {
    int status;
    std::string text;
};

void send_json(httplib::Response &response, const json &body, int status = 200) {
    response.status = status;
    // Named with its charset, the answer is not compressed: at the library's
    // default level that took 40 ms for an overlay that crosses loopback in one.
    // Text that is not UTF-8 (a file name, a program's message) is shown with
    // replacement characters rather than failing the answer.
    response.set_content(body.dump(-1, ' ', false, json::error_handler_t::replace), "application/json; charset=utf-8");
}

void send_error(httplib::Response &response, int status, const std::string &text) {
    send_json(response, {{"error", text}}, status);
}

bool valid_utf8(const std::string &text) {
    size_t i = 0;
    while (i < text.size()) {
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xe ? 3 : (lead >> 3) == 0x1e ? 4 : 0;
        if (length == 0 || i + length > text.size() || (length == 2 && lead < 0xc2)) return false;
        uint32_t code = length == 1 ? lead : lead & (0x7f >> length);
        for (size_t k = 1; k < length; ++k) {
            const unsigned char next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xc0) != 0x80) return false;
            code = (code << 6) | (next & 0x3f);
        }
        if ((length == 3 && (code < 0x800 || (code >= 0xd800 && code <= 0xdfff))) || (length == 4 && (code < 0x10000 || code > 0x10ffff)))
            return false;
        i += length;
    }
    return true;
}

// A name from the address (?path=, ?dir=), checked as the JSON parser checks the body's.
std::string name_parameter(const httplib::Request &request, const char *name) {
    std::string value = request.get_param_value(name);
    if (!valid_utf8(value)) throw Refusal{400, std::string("the ") + name + " in the address is not valid UTF-8"};
    return value;
}

const char *content_type(const std::string &path) {
    auto ends = [&](const char *suffix) {
        const size_t n = std::strlen(suffix);
        return path.size() >= n && path.compare(path.size() - n, n, suffix) == 0;
    };
    if (ends(".html") || ends(".htm")) return "text/html; charset=utf-8";
    if (ends(".css")) return "text/css; charset=utf-8";
    if (ends(".js") || ends(".mjs")) return "text/javascript; charset=utf-8";
    if (ends(".png")) return "image/png";
    if (ends(".svg")) return "image/svg+xml";
    if (ends(".json")) return "application/json";
    return "application/octet-stream";
}

WorkFiles::Opened open_file(const WorkFiles &files, const std::string &name) {
    WorkFiles::Refusal why;
    std::optional<WorkFiles::Opened> opened = files.open_file(name, why);
    if (opened) return std::move(*opened);
    if (why == WorkFiles::Refusal::Special) throw Refusal{400, "'" + name + "' is not a regular file"};
    throw Refusal{404, "no file '" + name + "' here"};
}

// Sent as it is read, a block at a time: a large file costs no more memory than a small one.
void send_file(httplib::Response &response, const WorkFiles &files, const std::string &name) {
    auto file = std::make_shared<WorkFiles::Opened>(open_file(files, name));
    response.set_header("Cache-Control", "no-store");
    response.set_content_provider(
        size_t(file->size), content_type(name), [file](size_t offset, size_t length, httplib::DataSink &sink) {
            char block[65536];
            const ssize_t got = pread(file->fd.get(), block, std::min(length, sizeof block), off_t(offset));
            // A file that shrank meanwhile ends the answer short rather than padding it.
            if (got <= 0) return false;
            return sink.write(block, size_t(got));
        });
}

json body_of(const httplib::Request &request) {
    json body = json::parse(request.body, nullptr, false);
    if (body.is_discarded() || !body.is_object()) throw RequestError("the request body is not a JSON object");
    return body;
}

const json &member(const json &body, const char *name) {
    auto item = body.find(name);
    if (item == body.end()) throw RequestError(std::string("the request has no \"") + name + "\"");
    return *item;
}

// A whole number: 16.7 is not control 16, and 4294967312 is not 16 either.
int integer_field(const json &body, const char *name) {
    const json &item = member(body, name);
    if (!item.is_number_integer()) throw RequestError(std::string("\"") + name + "\" must be a whole number");
    if (item.is_number_unsigned() ? item.get<uint64_t>() > uint64_t(INT_MAX)
                                  : item.get<int64_t>() < INT_MIN || item.get<int64_t>() > INT_MAX)
        throw RequestError(std::string("\"") + name + "\" is out of range");
    return item.get<int>();
}

template <class T>
T field(const json &body, const char *name) {
    const json &item = member(body, name);
    try {
        return item.get<T>();
    } catch (const json::exception &) {
        throw RequestError(std::string("\"") + name + "\" has the wrong type");
    }
}

float finite_field(const json &body, const char *name) {
    const json &item = member(body, name);
    if (!item.is_number()) throw RequestError(std::string("\"") + name + "\" must be a number");
    const double value = item.get<double>();
    if (!std::isfinite(value) || std::fabs(value) > 1e7) throw RequestError(std::string("\"") + name + "\" is out of range");
    return float(value);
}

// The frames of a render or a command line: forwards, from frame 1, within the timeline's limit.
std::pair<int, int> frame_range(const json &body) {
    const int first = integer_field(body, "first"), last = integer_field(body, "last");
    if (first < 1 || last < first || last > kLastFrame)
        throw RequestError("the frames must run forwards from frame 1 or later to frame " + std::to_string(kLastFrame) +
                           " at most");
    return {first, last};
}

std::string text_field(const json &body, const char *name) {
    const std::string text = field<std::string>(body, name);
    if (text.empty()) throw RequestError(std::string("\"") + name + "\" is empty");
    return text;
}

std::string shown_name(const std::string &asked) {
    const std::string normal = std::filesystem::path(asked).lexically_normal().string();
    return normal.empty() ? asked : normal;
}

// The bubbles layer the render panel asks for: "layer", a pattern beside the
// frames (the render reaches their folder through the one descriptor it
// inherits), and "layer_type"; none when "layer" is absent or empty.
struct AskedLayer {
    std::string pattern;  // as the command line names it; empty: no layer
    std::string type;
};
AskedLayer asked_layer(const json &body, const std::string &output, const std::string &folder) {
    const std::string layer = body.contains("layer") ? field<std::string>(body, "layer") : "";
    const std::string type = body.contains("layer_type") ? field<std::string>(body, "layer_type") : "";
    if (layer.empty()) return {};
    namespace fs = std::filesystem;
    const fs::path asked = fs::path(shown_name(layer)), frames = fs::path(shown_name(output));
    if (asked.parent_path() != frames.parent_path() || !asked.has_filename())
        throw RequestError("the layer is written beside the frames: give it the output's folder ('" +
                           frames.parent_path().string() + "')");
    if (!type.empty() && type != "half" && type != "float" && type != "uint16")
        throw RequestError("the layer's type is half, float or uint16, not '" + type + "'");
    return {folder + asked.filename().string(), type};
}

WorkFiles::Place place_of(const WorkFiles &files, const std::string &asked) {
    std::optional<WorkFiles::Place> place = files.place(asked);
    if (!place) throw Refusal{404, "'" + asked + "' is not a file under the working directory"};
    return std::move(*place);
}

// Where a setup may be saved: a .json name, new or already a setup. Saving
// must never replace some other file the user keeps there.
WorkFiles::Place setup_place(const WorkFiles &files, const std::string &asked) {
    const std::string suffix = ".json";
    if (asked.size() <= suffix.size() || asked.compare(asked.size() - suffix.size(), suffix.size(), suffix) != 0)
        throw Refusal{400, "setups are saved under names ending in .json, not as '" + asked + "'"};
    WorkFiles::Place place = place_of(files, asked);
    struct stat info;
    if (fstatat(place.folder.get(), place.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT) return place;
        throw Refusal{400, "cannot save over '" + asked + "': " + std::strerror(errno)};
    }
    const std::string kept = "'" + asked + "' is not a setup; it is kept as it is (choose another name)";
    if (!S_ISREG(info.st_mode) || uint64_t(info.st_size) > kLargestSetup) throw Refusal{400, kept};
    UniqueFd existing(openat(place.folder.get(), place.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::string text;
    char block[65536];
    ssize_t got = 0;
    while (existing && text.size() <= kLargestSetup && (got = read(existing.get(), block, sizeof block)) > 0)
        text.append(block, size_t(got));
    const json document = json::parse(text, nullptr, false);
    if (!existing || got < 0 || !document.is_object() || document.value("format", std::string()) != sparkhost::kSetupFormat)
        throw Refusal{400, kept};
    return place;
}

// Runs a call that names a file through a descriptor path, showing the
// user's own name in its messages instead.
template <class Call>
auto naming(const std::string &path, const std::string &shown, Call call) {
    try {
        return call();
    } catch (const RequestError &error) {
        std::string text = error.what();
        for (size_t at; (at = text.find(path)) != std::string::npos;) text.replace(at, path.size(), shown);
        throw RequestError(text);
    }
}

// Runs a handler, turning refusals into clear answers that change nothing.
template <class Handler>
httplib::Server::Handler guarded(Handler handler) {
    return [handler](const httplib::Request &request, httplib::Response &response) {
        try {
            handler(request, response);
        } catch (const Refusal &refusal) {
            send_error(response, refusal.status, refusal.text);
        } catch (const RequestError &error) {
            send_error(response, 400, error.what());
        } catch (const sparkhost::Error &error) {
            send_error(response, 500, error.what());
        } catch (const std::exception &error) {
            send_error(response, 500, std::string("unexpected failure: ") + error.what());
        }
    };
}

// Refused before its body is read: the answer, then the connection ends.
httplib::Server::HandlerResponse refuse(httplib::Response &response, int status, const std::string &text) {
    send_error(response, status, text);
    response.set_header("Connection", "close");
    GuardedServer::close_after_response();
    return httplib::Server::HandlerResponse::Handled;
}

}  // namespace

class StudioServer::PluginTurn {
public:
    explicit PluginTurn(std::atomic<int> &requests) : requests_(requests) {
        if (++requests_ > kPluginRequests) {
            --requests_;
            throw Refusal{503, "the studio is busy with earlier changes; try again in a moment"};
        }
    }
    ~PluginTurn() { --requests_; }
    PluginTurn(const PluginTurn &) = delete;
    PluginTurn &operator=(const PluginTurn &) = delete;

private:
    std::atomic<int> &requests_;
};

std::string make_token() {
    unsigned char bytes[16] = {};
    std::FILE *random = std::fopen("/dev/urandom", "rb");
    const bool read = random && std::fread(bytes, 1, sizeof bytes, random) == sizeof bytes;
    if (random) std::fclose(random);
    if (!read) throw sparkhost::Error("cannot read /dev/urandom for the access token");
    std::string token;
    char hex[3];
    for (unsigned char byte : bytes) {
        std::snprintf(hex, sizeof hex, "%02x", byte);
        token += hex;
    }
    return token;
}

StudioServer::StudioServer(Session &session, const ServerPaths &paths, std::string token)
    : session_(session),
      paths_(paths),
      work_(paths.working_dir),
      web_(paths.web),
      help_(paths.help),
      token_(std::move(token)),
      server_(std::make_unique<GuardedServer>(GuardedServer::Limits{})) {
    server_->set_payload_max_length(kMaxBody);
    // Small answers go out at once: with Nagle's delay a pen sample took 40 ms more.
    server_->set_tcp_nodelay(true);
    server_->set_keep_alive_max_count(1000);
    server_->set_read_timeout(10, 0);
    server_->set_write_timeout(10, 0);
    // Whatever escapes a handler is answered in one clean line, never with
    // the exception's text in a header.
    server_->set_exception_handler([](const httplib::Request &, httplib::Response &response, std::exception_ptr) {
        send_error(response, 500, "unexpected failure while answering this request");
    });
    routes();
}

StudioServer::~StudioServer() = default;

int StudioServer::bind(const std::string &address, int port, std::string &error) {
    const int bound = port == 0 ? server_->bind_to_any_port(address.c_str()) :
                                  (server_->bind_to_port(address.c_str(), port) ? port : -1);
    if (bound < 0) error = "cannot listen on " + address + ":" + std::to_string(port) + " (in use, or not an address here)";
    else rules_.emplace(token_, make_token(), address, bound);
    return bound;
}

void StudioServer::serve() { server_->listen_after_bind(); }

void StudioServer::stop() { server_->halt(); }

void StudioServer::routes() {
    httplib::Server &server = *server_;
    server.set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
        // Nothing the studio sends may be framed by, or leak its address to, another page.
        response.set_header("Referrer-Policy", "no-referrer");
        response.set_header("X-Frame-Options", "DENY");
        response.set_header("X-Content-Type-Options", "nosniff");
        AccessRequest asked{request.method,
                            request.path,
                            request.get_header_value("Host"),
                            request.get_header_value("Origin"),
                            request.get_header_value("Sec-Fetch-Site"),
                            request.get_header_value("Sec-Fetch-Mode"),
                            request.get_header_value(AccessRules::kTokenHeader),
                            request.get_header_value("Cookie")};
        const bool token_in_address = asked.token.empty() && request.has_param("token");
        if (token_in_address) asked.token = request.get_param_value("token");
        const AccessVerdict verdict = rules_->check(asked);
        if (verdict.access == Access::Refused) return refuse(response, 403, verdict.reason);
        // Bodies come whole, with their length declared and within the limit:
        // a chunked or compressed body could grow past it while being read.
        if (request.has_header("Transfer-Encoding"))
            return refuse(response, 411, "request bodies must be sent with a Content-Length, not in chunks");
        const std::string encoding = request.get_header_value("Content-Encoding");
        if (!encoding.empty() && encoding != "identity") return refuse(response, 415, "request bodies must not be compressed");
        if (request.method != "GET" && request.method != "HEAD" && !request.has_header("Content-Length"))
            return refuse(response, 411, "request bodies must be sent with a Content-Length");
        if (request.has_header("Content-Length")) {
            const std::string length = request.get_header_value("Content-Length");
            if (length.empty() || length.size() > 9 || length.find_first_not_of("0123456789") != std::string::npos ||
                std::stoul(length) > kMaxBody)
                return refuse(response, 413, "the request body is larger than " + std::to_string(kMaxBody / 1024) + " KiB");
        }
        // The page's own files may come later with the cookie alone; the page
        // keeps the token itself and sends it in a header with every call.
        if (token_in_address && request.path == "/") response.set_header("Set-Cookie", rules_->page_cookie());
        return httplib::Server::HandlerResponse::Unhandled;
    });

    server.Get("/", guarded([this](const httplib::Request &, httplib::Response &response) {
        send_file(response, web_, "index.html");
    }));
    server.Get("/favicon.ico", [](const httplib::Request &, httplib::Response &response) { response.status = 204; });
    server.Get(R"(/static/(.+))", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_file(response, web_, request.matches[1]);
    }));
    server.Get(R"(/help/(.+))", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_file(response, help_, request.matches[1]);
    }));
    server.Get("/api/file", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_file(response, work_, name_parameter(request, "path"));
    }));

    server.Get("/api/controls", guarded([this](const httplib::Request &, httplib::Response &response) {
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.controls());
    }));
    server.Get("/api/state", guarded([this](const httplib::Request &request, httplib::Response &response) {
        uint64_t after = 0;
        if (request.has_param("after")) after = std::strtoull(request.get_param_value("after").c_str(), nullptr, 10);
        json state = session_.state(after);
        state["render"] = render_.status();
        send_json(response, state);
    }));
    // The picture as raw RGB, top row first (exact pixels; compressing the
    // textured scenes cost more time than sending them). ?base=V, the
    // version the page has: 204 when nothing is newer, else the changes from
    // it (X-Base: V) when that is shorter (picture_delta.h).
    server.Get("/api/frame", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const Picture picture = session_.picture();
        response.set_header("X-Version", std::to_string(picture.version));
        response.set_header("X-Width", std::to_string(picture.width));
        response.set_header("X-Height", std::to_string(picture.height));
        response.set_header("Cache-Control", "no-store");
        const uint64_t base =
            request.has_param("base") ? std::strtoull(request.get_param_value("base").c_str(), nullptr, 10) : 0;
        if (base == picture.version) {
            response.status = 204;
            return;
        }
        if (std::optional<Picture> old = base ? session_.picture_at(base) : std::nullopt;
            old && old->width == picture.width && old->height == picture.height) {
            std::string delta = picture_delta(*old->rgb, *picture.rgb);
            if (delta.size() < picture.rgb->size() / 2) {
                response.set_header("X-Base", std::to_string(base));
                response.set_content(std::move(delta), "application/octet-stream");
                return;
            }
        }
        response.set_content(reinterpret_cast<const char *>(picture.rgb->data()), picture.rgb->size(),
                             "application/octet-stream");
    }));
    server.Get("/api/overlay", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const double zoom = request.has_param("zoom") ? std::atof(request.get_param_value("zoom").c_str()) : 1.0;
        if (!(zoom > 0.01 && zoom < 100)) throw RequestError("zoom must be between 0.01 and 100");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.overlay(float(zoom)));
    }));
    server.Get("/api/channels", guarded([this](const httplib::Request &, httplib::Response &response) {
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.channel_editor());
    }));
    server.Get("/api/files", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const std::string directory = name_parameter(request, "dir");
        auto entries = work_.list(directory, name_parameter(request, "ext"));
        if (!entries) throw Refusal{404, "'" + directory + "' is not a directory under the working directory"};
        json list = json::array();
        for (const WorkFiles::Entry &entry : *entries) list.push_back({{"name", entry.name}, {"directory", entry.directory}});
        send_json(response, {{"dir", directory}, {"entries", std::move(list)}});
    }));

    server.Post("/api/set", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const json &value = body.contains("value") ? body["value"] : json();
        std::string text;
        if (value.is_string()) text = value.get<std::string>();
        else if (value.is_number()) text = value.dump();
        else if (value.is_boolean()) text = value.get<bool>() ? "on" : "off";
        else throw RequestError("\"value\" must be a number, a switch or a text");
        const int number = integer_field(body, "number");
        const bool step = body.contains("step") ? field<bool>(body, "step") : true;
        float zoom = 0;
        if (body.contains("zoom")) {
            zoom = finite_field(body, "zoom");
            if (!(zoom > 0.01f && zoom < 100)) throw RequestError("zoom must be between 0.01 and 100");
        }
        PluginTurn turn(plugin_requests_);
        json answer = session_.set_value(number, text, step);
        // The controls' values and, given the page's zoom, the overlay ride
        // along: a change then costs the page this call and the picture's.
        answer["listing"] = session_.controls();
        if (zoom > 0) answer["overlay"] = session_.overlay(zoom)["overlay"];
        send_json(response, answer);
    }));
    server.Post("/api/undo", guarded([this](const httplib::Request &, httplib::Response &response) {
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.undo());
    }));
    server.Post("/api/redo", guarded([this](const httplib::Request &, httplib::Response &response) {
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.redo());
    }));
    server.Post("/api/press", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const int number = integer_field(body_of(request), "number");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.press(number));
    }));
    server.Post("/api/pen", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const float pressure = finite_field(body, "pressure");
        if (pressure < 0 || pressure > 1) throw RequestError("\"pressure\" must be between 0 and 1");
        const float zoom = body.contains("zoom") ? finite_field(body, "zoom") : 1.0f;
        const float x = finite_field(body, "x"), y = finite_field(body, "y");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.pen(x, y, pressure, zoom));
    }));
    server.Post("/api/goto", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const int frame = integer_field(body_of(request), "frame");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.go_to(frame));
    }));
    server.Post("/api/range", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const int first = integer_field(body, "first"), last = integer_field(body, "last");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.set_range(first, last));
    }));
    server.Post("/api/display", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const std::string display = text_field(body, "display"), view = text_field(body, "view");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.choose_display(display, view));
    }));
    server.Post("/api/key", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const int number = integer_field(body_of(request), "number");
        PluginTurn turn(plugin_requests_);
        send_json(response, session_.set_key(number));
    }));
    server.Post("/api/unkey", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const int number = integer_field(body, "number");
        // With "here": only the key at the frame shown.
        const bool here = body.contains("here") && field<bool>(body, "here");
        PluginTurn turn(plugin_requests_);
        send_json(response, here ? session_.remove_key(number) : session_.clear_keys(number));
    }));
    server.Post("/api/confirm", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const json &id = member(body, "id");
        if (!id.is_number_unsigned()) throw RequestError("\"id\" must be a question's number");
        if (!session_.answer_confirm(id.get<uint64_t>(), field<bool>(body, "yes")))
            throw RequestError("that question is no longer open");
        send_json(response, {{"ok", true}});
    }));
    server.Post("/api/setup/load", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const std::string asked = text_field(body_of(request), "path");
        const WorkFiles::Opened file = open_file(work_, asked);
        const std::string path = descriptor_path(file.fd.get());
        PluginTurn turn(plugin_requests_);
        naming(path, asked, [&] { session_.load_setup(path); });
        send_json(response, {{"ok", true}});
    }));
    server.Post("/api/setup/save", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const std::string asked = text_field(body_of(request), "path");
        const WorkFiles::Place place = setup_place(work_, asked);
        PluginTurn turn(plugin_requests_);
        naming(place.path(), asked, [&] { session_.save_setup(place.path()); });
        send_json(response, {{"ok", true}});
    }));
    server.Post("/api/import", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        std::optional<WorkFiles::Opened> file;
        if (body.contains("path")) file = open_file(work_, text_field(body, "path"));
        const std::optional<std::string> path =
            file ? std::optional<std::string>(descriptor_path(file->fd.get())) : std::nullopt;
        PluginTurn turn(plugin_requests_);
        json answer = session_.import_amplitude(path);
        answer["root"] = work_.root();
        send_json(response, answer);
    }));
    server.Post("/api/command", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const std::string setup = text_field(body, "setup"), output = text_field(body, "output");
        const auto [first, last] = frame_range(body);
        // The command must run as handed out: the folders it writes to exist.
        for (const std::string &name : {setup, output})
            if (std::string problem = make_folders_for(work_, name); !problem.empty()) throw RequestError(problem);
        const WorkFiles::Place setup_file = setup_place(work_, setup);
        place_of(work_, output);
        std::vector<std::string> words = {work_.relative(paths_.render_program)};
        PluginTurn turn(plugin_requests_);
        const std::string frames_folder = std::filesystem::path(shown_name(output)).parent_path().string();
        const AskedLayer layer = asked_layer(body, output, frames_folder.empty() ? "" : frames_folder + "/");
        naming(setup_file.path(), setup, [&] {
            for (std::string &word : session_.render_arguments(setup_file.path(), shown_name(setup), shown_name(output),
                                                               first, last, layer.pattern, layer.type))
                words.push_back(std::move(word));
        });
        send_json(response, {{"command", shell_command(words)}});
    }));
    server.Post("/api/render", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const std::string output = text_field(body, "output");
        const auto [first, last] = frame_range(body);
        if (std::string problem = make_folders_for(work_, output); !problem.empty()) throw RequestError(problem);
        WorkFiles::Place frames = place_of(work_, output);
        // The setup rides along beside the frames, so the render can be repeated.
        const size_t slash = output.find_last_of('/');
        const std::string folder = slash == std::string::npos ? "" : output.substr(0, slash + 1);
        const WorkFiles::Place setup = setup_place(work_, folder + "fizzle-studio-render.json");
        // fizzle-render reaches the folder through the descriptor it inherits.
        const std::string held = descriptor_path(frames.folder.get());
        const AskedLayer layer = asked_layer(body, output, held + "/");
        std::vector<std::string> arguments;
        PluginTurn turn(plugin_requests_);
        naming(setup.path(), folder + "fizzle-studio-render.json", [&] {
            arguments = session_.render_arguments(held + "/" + setup.name, held + "/" + setup.name,
                                                  held + "/" + frames.name, first, last, layer.pattern, layer.type);
        });
        arguments.push_back("--quiet");
        const std::string problem = render_.start(paths_.render_program, arguments, std::move(frames.folder),
                                                  frames.name, folder.empty() ? "." : folder.substr(0, folder.size() - 1),
                                                  first, last);
        if (!problem.empty()) throw RequestError(problem);
        send_json(response, render_.status());
    }));
    server.Post("/api/render/cancel", guarded([this](const httplib::Request &, httplib::Response &response) {
        render_.cancel();
        send_json(response, render_.status());
    }));
}
