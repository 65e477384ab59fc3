// DialogServer.cpp - the browser page's local server (rules in the header):
// listening on loopback; what it answers is in DialogRoutes.

#include "korvane/DialogServer.h"

#include "DialogRoutes.h"
#include "korvane/Error.h"

#include <httplib.h>

#include <random>
#include <thread>

namespace korvane {
namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr std::size_t kWorkerThreads = 32;

} // namespace

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
    DialogRoutes routes;  // before the server: its handlers read it
    httplib::Server server;
    std::thread thread;
};

DialogServer::DialogServer(std::filesystem::path webRoot, std::string token, ApiHandler api, int port)
    : impl_(std::make_unique<Impl>())
{
    impl_->routes.root = std::move(webRoot);
    impl_->routes.token = std::move(token);
    impl_->routes.api = std::move(api);
    if (impl_->routes.token.empty())
        throw Error("the dialog server needs a token");
    installDialogRoutes(impl_->server, impl_->routes);
    // An idle connection is let go soon, so stopping does not wait long for
    // a browser's kept-alive connection.
    impl_->server.set_keep_alive_timeout(1);
    // A client that sends half a request and waits holds a worker thread
    // until it times out: give up on it soon, and keep enough workers that
    // a few such clients leave the page its own.
    impl_->server.set_tcp_nodelay(true);
    impl_->server.set_read_timeout(1);
    impl_->server.set_write_timeout(1);
    impl_->server.new_task_queue = [] { return new httplib::ThreadPool(kWorkerThreads); };
    if (port == 0) {
        impl_->routes.port = impl_->server.bind_to_any_port(kLoopback);
    } else if (port > 0 && port < 65536 && impl_->server.bind_to_port(kLoopback, port)) {
        impl_->routes.port = port;
    }
    if (impl_->routes.port <= 0)
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
    return impl_->routes.port;
}

const std::string& DialogServer::token() const
{
    return impl_->routes.token;
}

std::string DialogServer::url() const
{
    return "http://" + std::string(kLoopback) + ":" + std::to_string(impl_->routes.port) + "/?token=" + impl_->routes.token;
}

} // namespace korvane
