// DialogRoutes.cpp - the dialog server's checks and routes (rules in
// DialogServer.h).

#include "DialogRoutes.h"

#include <httplib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace korvane {
namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kTokenHeader = "X-Korvane-Token";
constexpr const char* kTokenCookie = "korvane-token";
constexpr std::size_t kMaxBody = 64 * 1024;

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

void installDialogRoutes(httplib::Server& server, const DialogRoutes& routes)
{
    server.set_pre_routing_handler([&routes](const httplib::Request& request, httplib::Response& response) {
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
        if (checkRequest(facts, routes.port, routes.token) != Refusal::none) {
            response.status = 403;
            response.set_content("refused\n", "text/plain");
            return httplib::Server::HandlerResponse::Handled;
        }
        // The page never compresses what it sends, and a few kilobytes of a
        // compressed body may unpack to any size before a limit sees it.
        if (request.has_header("Content-Encoding")) {
            response.status = 415;
            response.set_content("compressed bodies are not taken\n", "text/plain");
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });

    if (routes.api) {
        const auto answer = [&routes](const httplib::Request& request, httplib::Response& response) {
            ApiRequest call;
            call.method = request.method;
            call.path = request.path;
            for (const auto& [name, value] : request.params)
                call.query.emplace(name, value);
            call.body = request.body;
            const ApiResponse result = routes.api(call);
            response.status = result.status;
            for (const auto& [name, value] : result.headers)
                response.set_header(name, value);
            response.set_content(result.body, result.contentType.c_str());
        };
        server.Get("/api/.*", answer);
        server.Post("/api/.*", answer);
    }

    server.Get(R"(/.*)", [&routes](const httplib::Request& request, httplib::Response& response) {
        const std::optional<std::filesystem::path> file = pageFile(routes.root, request.path);
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
            response.set_header("Set-Cookie", std::string(kTokenCookie) + "=" + routes.token +
                                                  "; HttpOnly; SameSite=Strict; Path=/");
    });

    // Events are small.
    server.set_payload_max_length(kMaxBody);
}

} // namespace korvane
