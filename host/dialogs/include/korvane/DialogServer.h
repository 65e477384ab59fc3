// DialogServer.h - the local web server behind the browser's dialog page.
//
// It listens on 127.0.0.1 only, at a free port, and serves the page's own
// files from one folder. Every request must carry the session's secret
// token: in the query (token=...), the X-Korvane-Token header, or the cookie
// the server sets when the page is first opened with the token in its URL.
// A request is refused (403) without the token or with a wrong one, from
// another Origin, or with a Host header other than this server's, which
// stops other sites and DNS rebinding from reaching the dialog. Paths that
// leave the folder, name hidden files or name no regular file are 404.
// Responses are not cached and send no Referer onwards, so the token stays
// on this machine. Bodies over 64 KB are refused (413), and so are
// compressed ones (415), which could unpack to any size; a client that stops
// sending mid-request is let go after a second, and 32 worker threads keep
// a few such clients from holding up the page.
//
// Paths under /api/ go to the ApiHandler given to the server (after the
// same checks), so the page's scripts can talk to whoever runs the dialog;
// without one they are 404 like any missing file.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

enum class Refusal { none, missingToken, wrongToken, foreignOrigin, foreignHost };

// What the checks look at in a request; empty strings for absent headers.
struct RequestFacts {
    std::string host;
    std::string origin;
    std::string token;
};

// The checks every request passes before anything is served.
Refusal checkRequest(const RequestFacts& request, int port, std::string_view token);

// The file of the folder `root` that a URL path names ("/" is index.html),
// or nullopt when the path leaves the folder (also through a link), names a
// hidden part, or names no regular file.
std::optional<std::filesystem::path> pageFile(const std::filesystem::path& root, std::string_view urlPath);

// 32 random bytes as 64 hex digits.
std::string makeToken();

// A request to /api/..., answered on one of the server's threads.
struct ApiRequest {
    std::string method;  // "GET" or "POST"
    std::string path;    // "/api/state"
    std::map<std::string, std::string> query;
    std::string body;
};

struct ApiResponse {
    int status = 200;
    std::string contentType = "application/json";
    std::string body;
    std::map<std::string, std::string> headers;
};

using ApiHandler = std::function<ApiResponse(const ApiRequest&)>;

class DialogServer {
public:
    // Starts serving `webRoot` on 127.0.0.1 at a free port (or at `port`
    // when it is not 0), /api/ paths through `api`. Throws Error when
    // it cannot listen.
    explicit DialogServer(std::filesystem::path webRoot, std::string token = makeToken(), ApiHandler api = {},
                          int port = 0);
    // Stops serving.
    ~DialogServer();
    DialogServer(const DialogServer&) = delete;
    DialogServer& operator=(const DialogServer&) = delete;

    int port() const;
    const std::string& token() const;
    // The page's address with the token: http://127.0.0.1:PORT/?token=...
    std::string url() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace korvane
