// DialogServer.cpp - the browser page's local server (rules in the header).

#include "korvane/DialogServer.h"

#include "korvane/DialogSession.h"

#include <httplib.h>

#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <thread>

namespace korvane {
namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kTokenHeader = "X-Korvane-Token";
constexpr const char* kTokenCookie = "korvane-token";
constexpr std::size_t kWorkerThreads = 32;

// Compares in a time that does not depend on where the texts differ.
bool sameSecret(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

std::string cookieValue(const std::string& cookies, std::string_view name)
{
    std::istringstream in(cookies);
    std::string part;
    while (std::getline(in, part, ';')) {
        const std::size_t start = part.find_first_not_of(' ');
        if (start == std::string::npos)
            continue;
        const std::string_view pair = std::string_view(part).substr(start);
        if (pair.size() > name.size() && pair.substr(0, name.size()) == name && pair[name.size()] == '=')
            return std::string(pair.substr(name.size() + 1));
    }
    return {};
}

const char* contentTypeOf(const std::filesystem::path& file)
{
    const std::string extension = file.extension().string();
    if (extension == ".html")
        return "text/html; charset=utf-8";
    if (extension == ".js")
        return "text/javascript; charset=utf-8";
    if (extension == ".css")
        return "text/css; charset=utf-8";
    if (extension == ".json")
        return "application/json";
    if (extension == ".png")
        return "image/png";
    if (extension == ".svg")
        return "image/svg+xml";
    return "application/octet-stream";
}

} // namespace

Refusal checkRequest(const RequestFacts& request, int port, std::string_view token)
{
    const std::string suffix = ":" + std::to_string(port);
    if (request.host != kLoopback + suffix && request.host != "localhost" + suffix)
        return Refusal::foreignHost;
    if (!request.origin.empty() && request.origin != "http://" + std::string(kLoopback) + suffix &&
        request.origin != "http://localhost" + suffix)
        return Refusal::foreignOrigin;
    if (request.token.empty())
        return Refusal::missingToken;
    if (!sameSecret(request.token, token))
        return Refusal::wrongToken;
    return Refusal::none;
}

std::optional<std::filesystem::path> pageFile(const std::filesystem::path& root, std::string_view urlPath)
{
    if (urlPath.empty() || urlPath.front() != '/')
        return std::nullopt;
    std::filesystem::path relative;
    std::string_view rest = urlPath.substr(1);
    if (rest.empty())
        rest = "index.html";
    while (!rest.empty()) {
        const std::size_t slash = rest.find('/');
        const std::string_view part = rest.substr(0, slash);
        // No empty, current, parent or hidden parts, nothing a file system
        // could read as another separator or an end.
        if (part.empty() || part.front() == '.' || part.find_first_of(std::string_view("\\\0:", 3)) != part.npos)
            return std::nullopt;
        relative /= std::string(part);
        rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
    }
    std::error_code error;
    const std::filesystem::path base = std::filesystem::canonical(root, error);
    if (error)
        return std::nullopt;
    const std::filesystem::path file = std::filesystem::canonical(base / relative, error);
    if (error || !std::filesystem::is_regular_file(file, error))
        return std::nullopt;
    // A link inside the folder may point out of it.
    const auto [inBase, inFile] = std::mismatch(base.begin(), base.end(), file.begin(), file.end());
    if (inBase != base.end())
        return std::nullopt;
    return file;
}

std::string makeToken()
{
    std::random_device source;
    std::string token;
    constexpr char kHex[] = "0123456789abcdef";
    for (int i = 0; i < 32; ++i) {
        const unsigned byte = source() & 0xFFu;
        token += kHex[byte >> 4];
        token += kHex[byte & 0xFu];
    }
    return token;
}

struct DialogServer::Impl {
    std::filesystem::path root;
    std::string token;
    httplib::Server server;
    int port = 0;
    std::thread thread;
    ApiHandler api;

    void refuseOrPass();
    void serveApi();
    void servePages();
};

void DialogServer::Impl::refuseOrPass()
{
    server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        RequestFacts facts;
        facts.host = request.get_header_value("Host");
        facts.origin = request.get_header_value("Origin");
        facts.token = request.get_param_value("token");
        if (facts.token.empty())
            facts.token = request.get_header_value(kTokenHeader);
        if (facts.token.empty())
            facts.token = cookieValue(request.get_header_value("Cookie"), kTokenCookie);
        response.set_header("Cache-Control", "no-store");
        response.set_header("Referrer-Policy", "no-referrer");
        response.set_header("X-Content-Type-Options", "nosniff");
        if (checkRequest(facts, port, token) == Refusal::none)
            return httplib::Server::HandlerResponse::Unhandled;
        response.status = 403;
        response.set_content("refused\n", "text/plain");
        return httplib::Server::HandlerResponse::Handled;
    });
}

void DialogServer::Impl::serveApi()
{
    if (!api)
        return;
    const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
        ApiRequest call;
        call.method = request.method;
        call.path = request.path;
        for (const auto& [name, value] : request.params)
            call.query.emplace(name, value);
        call.body = request.body;
        const ApiResponse result = api(call);
        response.status = result.status;
        for (const auto& [name, value] : result.headers)
            response.set_header(name, value);
        response.set_content(result.body, result.contentType.c_str());
    };
    server.Get("/api/.*", answer);
    server.Post("/api/.*", answer);
}

void DialogServer::Impl::servePages()
{
    server.Get(R"(/.*)", [this](const httplib::Request& request, httplib::Response& response) {
        const std::optional<std::filesystem::path> file = pageFile(root, request.path);
        std::ifstream in;
        if (file)
            in.open(*file, std::ios::binary);
        if (!file || !in) {
            response.status = 404;
            response.set_content("not found\n", "text/plain");
            return;
        }
        const std::string body((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        response.set_content(body, contentTypeOf(*file));
        // The page keeps the token for its own later requests.
        if (request.has_param("token"))
            response.set_header("Set-Cookie", std::string(kTokenCookie) + "=" + token +
                                                  "; HttpOnly; SameSite=Strict; Path=/");
    });
}

DialogServer::DialogServer(std::filesystem::path webRoot, std::string token, ApiHandler api, int port)
    : impl_(std::make_unique<Impl>())
{
    impl_->root = std::move(webRoot);
    impl_->token = std::move(token);
    impl_->api = std::move(api);
    if (impl_->token.empty())
        throw Error("the dialog server needs a token");
    impl_->refuseOrPass();
    impl_->serveApi();
    impl_->servePages();
    // Events are small; an idle connection is let go soon, so stopping
    // does not wait long for a browser's kept-alive connection.
    impl_->server.set_payload_max_length(64 * 1024);
    impl_->server.set_keep_alive_timeout(1);
    // A client that sends half a request and waits holds a worker thread
    // until it times out: give up on it soon, and keep enough workers that
    // a few such clients leave the page its own.
    impl_->server.set_tcp_nodelay(true);
    impl_->server.set_read_timeout(1);
    impl_->server.set_write_timeout(1);
    impl_->server.new_task_queue = [] { return new httplib::ThreadPool(kWorkerThreads); };
    if (port == 0) {
        impl_->port = impl_->server.bind_to_any_port(kLoopback);
    } else if (port > 0 && port < 65536 && impl_->server.bind_to_port(kLoopback, port)) {
        impl_->port = port;
    }
    if (impl_->port <= 0)
        throw Error("cannot listen on " + std::string(kLoopback) +
                    (port != 0 ? ":" + std::to_string(port) + " (is the port in use?)" : ""));
    impl_->thread = std::thread([impl = impl_.get()] { impl->server.listen_after_bind(); });
}

DialogServer::~DialogServer()
{
    impl_->server.stop();
    if (impl_->thread.joinable())
        impl_->thread.join();
}

int DialogServer::port() const
{
    return impl_->port;
}

const std::string& DialogServer::token() const
{
    return impl_->token;
}

std::string DialogServer::url() const
{
    return "http://" + std::string(kLoopback) + ":" + std::to_string(impl_->port) + "/?token=" + impl_->token;
}

} // namespace korvane
