#include "Routes.h"

#include <httplib.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace {

const char kHtml[] = "text/html; charset=utf-8";
const char kText[] = "text/plain; charset=utf-8";
const char kJson[] = "application/json; charset=utf-8";
const char kBinary[] = "application/octet-stream";
const char kScript[] = "application/javascript; charset=utf-8";

// Pages and their style sheets and scripts, kept as files.
const struct {
    const char* path;
    const char* file;
} kPages[] = {
    {"/", "site.html"},
    {"/client/index.html", "home.html"},
    {"/client/gallery.html", "gallery.html"},
    {"/client/melo.css", "melo.css"},
    {"/client/melo.js", "melo.js"},
    {"/web/member/index", "member.html"},
    {"/web/combo/index", "combo.html"},
    {"/help/index.html", "help.html"},
    {"/placeholder.css", "placeholder.css"},
};

const char* contentTypeOf(const std::string& file)
{
    const auto endsWith = [&file](const char* suffix) {
        const size_t n = std::char_traits<char>::length(suffix);
        return file.size() > n && file.compare(file.size() - n, n, suffix) == 0;
    };
    if (endsWith(".css"))
        return "text/css; charset=utf-8";
    if (endsWith(".js"))
        return kScript;
    return kHtml;
}

// Waits in short steps so a shutdown is not held up.
void pause(int ms, const std::atomic<bool>& stopping)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (!stopping && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

size_t sizeParam(const httplib::Request& req, const char* name, size_t fallback)
{
    if (!req.has_param(name))
        return fallback;
    try {
        return static_cast<size_t>(std::stoull(req.get_param_value(name)));
    } catch (const std::exception&) {
        return fallback;
    }
}

// A generated body of `bytes` bytes sent in ten pieces spread over `ms`
// milliseconds (in 64 KiB pieces when not paced), with or without a length.
void sendGeneratedBody(httplib::Response& res, size_t bytes, size_t ms, bool chunked,
                       const std::atomic<bool>& stopping)
{
    const size_t piece = ms ? std::max<size_t>(1, (bytes + 9) / 10) : 64 * 1024;
    const int pauseMs = ms ? static_cast<int>(ms / 10) : 0;
    auto writePiece = [piece, pauseMs, bytes, &stopping](size_t offset, httplib::DataSink& sink) {
        const size_t n = std::min(piece, bytes - offset);
        std::string data(n, '\0');
        for (size_t i = 0; i < n; ++i)
            data[i] = testBodyByte(offset + i);
        if (!sink.write(data.data(), n))
            return false;
        pause(pauseMs, stopping);
        return !stopping;
    };
    if (!chunked) {
        res.set_content_provider(bytes, kBinary, [writePiece](size_t offset, size_t, httplib::DataSink& sink) {
            return writePiece(offset, sink);
        });
        return;
    }
    res.set_chunked_content_provider(kBinary, [writePiece, bytes](size_t offset, httplib::DataSink& sink) {
        if (offset >= bytes) {
            sink.done();
            return true;
        }
        return writePiece(offset, sink);
    });
}

void addTestRoutes(httplib::Server& server, ServiceContext& context)
{
    const std::atomic<bool>& stopping = context.stopping;
    server.Get("/test/ping", [](const httplib::Request&, httplib::Response& res) { res.set_content("pong", kText); });
    server.Get(R"(/test/status/(\d{3}))", [](const httplib::Request& req, httplib::Response& res) {
        const int status = std::stoi(req.matches[1]);
        res.status = status >= 200 && status <= 599 ? status : 400;
        res.set_content("status " + std::to_string(res.status) + " body", kText);
    });
    server.Get("/test/empty", [](const httplib::Request&, httplib::Response& res) { res.set_content("", kText); });
    // A server-side redirect to the address in "to", wherever it points.
    server.Get("/test/redirect", [](const httplib::Request& req, httplib::Response& res) {
        res.set_redirect(req.get_param_value("to"), 302);
    });
    server.Get("/test/large", [&stopping](const httplib::Request& req, httplib::Response& res) {
        sendGeneratedBody(res, sizeParam(req, "bytes", 1 << 20), sizeParam(req, "ms", 0), false, stopping);
    });
    server.Get("/test/slow", [&stopping](const httplib::Request& req, httplib::Response& res) {
        sendGeneratedBody(res, sizeParam(req, "bytes", 4096), sizeParam(req, "ms", 2000), false, stopping);
    });
    server.Get("/test/chunked", [&stopping](const httplib::Request& req, httplib::Response& res) {
        sendGeneratedBody(res, sizeParam(req, "bytes", 65536), sizeParam(req, "ms", 0), true, stopping);
    });
    // Headers and a few bytes of a longer body, then nothing for `ms`.
    server.Get("/test/stall", [&stopping](const httplib::Request& req, httplib::Response& res) {
        const size_t bytes = sizeParam(req, "bytes", 16);
        const int ms = static_cast<int>(sizeParam(req, "ms", 30000));
        res.set_content_provider(bytes + 1024, kBinary,
                                 [bytes, ms, &stopping](size_t offset, size_t, httplib::DataSink& sink) {
                                     if (offset == 0 && !sink.write(std::string(bytes, 's').data(), bytes))
                                         return false;
                                     pause(ms, stopping);
                                     return false;
                                 });
    });
    // A body without end: 1 KiB every 100 ms until the client goes.
    server.Get("/test/endless", [&stopping](const httplib::Request&, httplib::Response& res) {
        res.set_chunked_content_provider(kBinary, [&stopping](size_t, httplib::DataSink& sink) {
            const std::string piece(1024, 'e');
            if (!sink.write(piece.data(), piece.size()))
                return false;
            pause(100, stopping);
            return !stopping;
        });
    });
    server.Post("/test/echo", [](const httplib::Request& req, httplib::Response& res) {
        res.set_content(req.body, kBinary);
    });
    server.Get("/test/headers", [](const httplib::Request& req, httplib::Response& res) {
        std::string lines;
        for (const auto& [name, value] : req.headers)
            lines += name + ": " + value + "\n";
        res.set_content(lines, kText);
    });
    ServiceState& state = context.state;
    server.Get("/test/config", [&state](const httplib::Request&, httplib::Response& res) {
        res.set_content(state.describe(), kText);
    });
    server.Post("/test/config", [&state](const httplib::Request& req, httplib::Response& res) {
        std::string error;
        if (!state.configure(req.params, &error)) {
            res.status = 400;
            res.set_content(error + "\n", kText);
            return;
        }
        res.set_content(state.describe(), kText);
    });
}

void addPageRoutes(httplib::Server& server, ServiceContext& context)
{
    for (const auto& page : kPages) {
        const std::string file = context.pagesDir + "/" + page.file;
        const char* type = contentTypeOf(file);
        server.Get(page.path, [file, type](const httplib::Request&, httplib::Response& res) {
            // Read at every request: an edited page shows without a restart.
            std::ifstream in(file, std::ios::binary);
            if (!in) {
                res.status = 404;
                res.set_content("page missing: " + file + "\n", kText);
                return;
            }
            res.set_content(std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()),
                            type);
        });
    }
    const std::string& script = context.webChannelScript;
    server.Get("/qwebchannel.js", [&script](const httplib::Request&, httplib::Response& res) {
        if (script.empty()) {
            res.status = 404;
            return;
        }
        res.set_content(script, kScript);
    });
}

} // namespace

void addRoutes(httplib::Server& server, ServiceContext& context)
{
    ServiceState& state = context.state;
    const std::atomic<bool>& stopping = context.stopping;
    server.Get("/api/client/init", [&state, &stopping](const httplib::Request&, httplib::Response& res) {
        const InitAnswer init = state.init();
        pause(init.delayMs, stopping);
        res.set_content(initAnswerBody(init), init.bodyRaw ? kText : kJson);
    });

    const Gallery& gallery = context.gallery;
    server.Get("/gallery/index.json", [&gallery](const httplib::Request&, httplib::Response& res) {
        res.set_content(gallery.indexJson(), kJson);
    });
    server.Get("/gallery/(.+)", [&gallery](const httplib::Request& req, httplib::Response& res) {
        const GalleryPicture* picture = gallery.find(req.matches[1]);
        if (!picture) {
            res.status = 404;
            res.set_content("no such picture\n", kText);
            return;
        }
        res.set_content(picture->bytes, picture->mimeType.c_str());
    });
    server.Get("/avatar.jpg", [&gallery](const httplib::Request&, httplib::Response& res) {
        if (gallery.avatarJpeg().empty()) {
            res.status = 404;
            return;
        }
        res.set_content(gallery.avatarJpeg(), "image/jpeg");
    });

    addPageRoutes(server, context);
    addTestRoutes(server, context);
}
