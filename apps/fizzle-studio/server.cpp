// Routes of the studio: static files, then /api/... calls answered in JSON.
#include "server.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include <httplib.h>

#include "command_line.h"
#include "make_folders.h"
#include "picture_delta.h"
#include "sparkhost/error.h"

using nlohmann::json;

namespace {

constexpr const char *kCookie = "fizzle_studio_token";
// Every call the page makes is small; a larger body is refused unread.
constexpr size_t kMaxBody = 64 * 1024;

void send_json(httplib::Response &response, const json &body, int status = 200) {
    response.status = status;
    // Named with its charset, the answer is not compressed: at the library's
    // default level that took 40 ms for an overlay that crosses loopback in one.
    response.set_content(body.dump(), "application/json; charset=utf-8");
}

void send_error(httplib::Response &response, int status, const std::string &text) {
    send_json(response, {{"error", text}}, status);
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

bool send_file(httplib::Response &response, const WorkFiles &files, const std::string &name) {
    std::optional<std::string> path = files.resolve(name);
    std::ifstream in;
    if (path) in.open(*path, std::ios::binary);
    std::error_code error;
    if (!path || !in || std::filesystem::is_directory(*path, error)) {
        send_error(response, 404, "no file '" + name + "' here");
        return false;
    }
    std::ostringstream body;
    body << in.rdbuf();
    response.set_content(body.str(), content_type(*path));
    response.set_header("Cache-Control", "no-store");
    return true;
}

std::string cookie_value(const std::string &header, const std::string &name) {
    size_t start = 0;
    while (start < header.size()) {
        size_t end = header.find(';', start);
        if (end == std::string::npos) end = header.size();
        std::string part = header.substr(start, end - start);
        const size_t first = part.find_first_not_of(' ');
        part = first == std::string::npos ? "" : part.substr(first);
        if (part.compare(0, name.size() + 1, name + "=") == 0) return part.substr(name.size() + 1);
        start = end + 1;
    }
    return {};
}

// Compares in constant time, so the token cannot be guessed a digit at a time.
bool same_text(const std::string &a, const std::string &b) {
    if (a.size() != b.size()) return false;
    unsigned char difference = 0;
    for (size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

json body_of(const httplib::Request &request) {
    json body = json::parse(request.body, nullptr, false);
    if (body.is_discarded() || !body.is_object()) throw RequestError("the request body is not a JSON object");
    return body;
}

template <class T>
T field(const json &body, const char *name) {
    auto item = body.find(name);
    if (item == body.end()) throw RequestError(std::string("the request has no \"") + name + "\"");
    try {
        return item->get<T>();
    } catch (const json::exception &) {
        throw RequestError(std::string("\"") + name + "\" has the wrong type");
    }
}

float finite_field(const json &body, const char *name) {
    const double value = field<double>(body, name);
    if (!std::isfinite(value) || std::fabs(value) > 1e7) throw RequestError(std::string("\"") + name + "\" is out of range");
    return float(value);
}

// A path field the page sends, as an absolute path under the working
// directory; refused paths answer 404 like missing files.
struct PathRefused {
    std::string text;
};

std::string work_path(const WorkFiles &files, const json &body, const char *name) {
    const std::string asked = field<std::string>(body, name);
    std::optional<std::string> path = files.resolve(asked);
    if (asked.empty() || !path) throw PathRefused{"'" + asked + "' is not a file under the working directory"};
    return *path;
}

// Runs a handler, turning refusals into clear answers that change nothing.
template <class Handler>
httplib::Server::Handler guarded(Handler handler) {
    return [handler](const httplib::Request &request, httplib::Response &response) {
        try {
            handler(request, response);
        } catch (const PathRefused &refused) {
            send_error(response, 404, refused.text);
        } catch (const RequestError &error) {
            send_error(response, 400, error.what());
        } catch (const sparkhost::Error &error) {
            send_error(response, 500, error.what());
        } catch (const std::exception &error) {
            send_error(response, 500, std::string("unexpected failure: ") + error.what());
        }
    };
}

}  // namespace

std::string make_token() {
    unsigned char bytes[16] = {};
    std::FILE *random = std::fopen("/dev/urandom", "rb");
    if (!random || std::fread(bytes, 1, sizeof bytes, random) != sizeof bytes)
        throw sparkhost::Error("cannot read /dev/urandom for the access token");
    std::fclose(random);
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
      server_(std::make_unique<httplib::Server>()) {
    server_->set_payload_max_length(kMaxBody);
    // Small answers go out at once: with Nagle's delay a pen sample took 40 ms more.
    server_->set_tcp_nodelay(true);
    server_->set_keep_alive_max_count(1000);
    server_->set_read_timeout(10, 0);
    server_->set_write_timeout(10, 0);
    routes();
}

StudioServer::~StudioServer() = default;

bool StudioServer::authorised(const std::string &query_token, const std::string &cookie) const {
    return same_text(query_token, token_) || same_text(cookie_value(cookie, kCookie), token_);
}

int StudioServer::bind(const std::string &address, int port, std::string &error) {
    const int bound = port == 0 ? server_->bind_to_any_port(address.c_str()) :
                                  (server_->bind_to_port(address.c_str(), port) ? port : -1);
    if (bound < 0) error = "cannot listen on " + address + ":" + std::to_string(port) + " (in use, or not an address here)";
    return bound;
}

void StudioServer::serve() { server_->listen_after_bind(); }

void StudioServer::stop() { server_->stop(); }

void StudioServer::routes() {
    httplib::Server &server = *server_;
    server.set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) {
        const std::string query = request.has_param("token") ? request.get_param_value("token") : "";
        if (!authorised(query, request.get_header_value("Cookie"))) {
            send_error(response, 403, "forbidden: this address needs the token the studio printed when it started");
            return httplib::Server::HandlerResponse::Handled;
        }
        // The token in the address becomes a cookie, so the page's own calls need not carry it.
        if (same_text(query, token_))
            response.set_header("Set-Cookie", std::string(kCookie) + "=" + token_ + "; Path=/; HttpOnly; SameSite=Strict");
        return httplib::Server::HandlerResponse::Unhandled;
    });

    server.Get("/", [this](const httplib::Request &, httplib::Response &response) {
        send_file(response, web_, "index.html");
    });
    server.Get("/favicon.ico", [](const httplib::Request &, httplib::Response &response) { response.status = 204; });
    server.Get(R"(/static/(.+))", [this](const httplib::Request &request, httplib::Response &response) {
        send_file(response, web_, request.matches[1]);
    });
    server.Get(R"(/help/(.+))", [this](const httplib::Request &request, httplib::Response &response) {
        send_file(response, help_, request.matches[1]);
    });
    server.Get("/api/file", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_file(response, work_, request.get_param_value("path"));
    }));

    server.Get("/api/controls", guarded([this](const httplib::Request &, httplib::Response &response) {
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
        send_json(response, session_.overlay(float(zoom)));
    }));
    server.Get("/api/channels", guarded([this](const httplib::Request &, httplib::Response &response) {
        send_json(response, session_.channel_editor());
    }));
    server.Get("/api/files", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const std::string directory = request.get_param_value("dir");
        auto entries = work_.list(directory, request.get_param_value("ext"));
        if (!entries) throw PathRefused{"'" + directory + "' is not a directory under the working directory"};
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
        const bool step = body.contains("step") ? field<bool>(body, "step") : true;
        json answer = session_.set_value(field<int>(body, "number"), text, step);
        // The controls' values and, given the page's zoom, the overlay ride
        // along: a change then costs the page this call and the picture's.
        answer["listing"] = session_.controls();
        if (body.contains("zoom")) {
            const float zoom = finite_field(body, "zoom");
            if (!(zoom > 0.01f && zoom < 100)) throw RequestError("zoom must be between 0.01 and 100");
            answer["overlay"] = session_.overlay(zoom)["overlay"];
        }
        send_json(response, answer);
    }));
    server.Post("/api/undo", guarded([this](const httplib::Request &, httplib::Response &response) {
        send_json(response, session_.undo());
    }));
    server.Post("/api/redo", guarded([this](const httplib::Request &, httplib::Response &response) {
        send_json(response, session_.redo());
    }));
    server.Post("/api/press", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_json(response, session_.press(field<int>(body_of(request), "number")));
    }));
    server.Post("/api/pen", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const float pressure = finite_field(body, "pressure");
        if (pressure < 0 || pressure > 1) throw RequestError("\"pressure\" must be between 0 and 1");
        const float zoom = body.contains("zoom") ? finite_field(body, "zoom") : 1.0f;
        send_json(response, session_.pen(finite_field(body, "x"), finite_field(body, "y"), pressure, zoom));
    }));
    server.Post("/api/goto", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_json(response, session_.go_to(field<int>(body_of(request), "frame")));
    }));
    server.Post("/api/range", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        send_json(response, session_.set_range(field<int>(body, "first"), field<int>(body, "last")));
    }));
    server.Post("/api/key", guarded([this](const httplib::Request &request, httplib::Response &response) {
        send_json(response, session_.set_key(field<int>(body_of(request), "number")));
    }));
    server.Post("/api/unkey", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        // With "here": only the key at the frame shown.
        if (body.contains("here") && field<bool>(body, "here")) send_json(response, session_.remove_key(field<int>(body, "number")));
        else send_json(response, session_.clear_keys(field<int>(body, "number")));
    }));
    server.Post("/api/confirm", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        if (!session_.answer_confirm(field<uint64_t>(body, "id"), field<bool>(body, "yes")))
            throw RequestError("that question is no longer open");
        send_json(response, {{"ok", true}});
    }));
    server.Post("/api/setup/load", guarded([this](const httplib::Request &request, httplib::Response &response) {
        session_.load_setup(work_path(work_, body_of(request), "path"));
        send_json(response, {{"ok", true}});
    }));
    server.Post("/api/setup/save", guarded([this](const httplib::Request &request, httplib::Response &response) {
        session_.save_setup(work_path(work_, body_of(request), "path"));
        send_json(response, {{"ok", true}});
    }));
    server.Post("/api/import", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        std::optional<std::string> path;
        if (body.contains("path")) path = work_path(work_, body, "path");
        json answer = session_.import_amplitude(path);
        answer["root"] = work_.root();
        send_json(response, answer);
    }));
    server.Post("/api/command", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const std::string setup = work_path(work_, body, "setup");
        const std::string output = field<std::string>(body, "output");
        work_path(work_, body, "output");
        // The command must run as handed out: the folders it writes to exist.
        for (const std::string &name : {field<std::string>(body, "setup"), output})
            if (std::string problem = make_folders_for(work_, name); !problem.empty()) throw RequestError(problem);
        std::vector<std::string> words = {work_.relative(paths_.render_program)};
        for (std::string &word : session_.render_arguments(setup, work_.relative(setup), output,
                                                           field<int>(body, "first"), field<int>(body, "last")))
            words.push_back(std::move(word));
        send_json(response, {{"command", shell_command(words)}});
    }));
    server.Post("/api/render", guarded([this](const httplib::Request &request, httplib::Response &response) {
        const json body = body_of(request);
        const std::string output = work_path(work_, body, "output");
        if (std::string problem = make_folders_for(work_, field<std::string>(body, "output")); !problem.empty())
            throw RequestError(problem);
        const int first = field<int>(body, "first"), last = field<int>(body, "last");
        if (first < 1 || last < first) throw RequestError("the frames to render must run from 1 or later, forwards");
        // The setup rides along beside the frames, so the render can be repeated.
        const std::string setup = std::filesystem::path(output).parent_path() / "fizzle-studio-render.json";
        if (!work_.resolve(work_.relative(setup))) throw PathRefused{"the output folder is not under the working directory"};
        std::vector<std::string> arguments = session_.render_arguments(setup, setup, output, first, last);
        arguments.push_back("--quiet");
        const std::string problem = render_.start(paths_.render_program, arguments, output, first, last);
        if (!problem.empty()) throw RequestError(problem);
        send_json(response, render_.status());
    }));
    server.Post("/api/render/cancel", guarded([this](const httplib::Request &, httplib::Response &response) {
        render_.cancel();
        send_json(response, render_.status());
    }));
}
