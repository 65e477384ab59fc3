// dialog_server_fuzzer.cpp - libFuzzer harness of the browser dialog's
// server as it answers one connection: the input is what a client sends
// (one or more requests, pipelined), answered by the server's own checks
// and routes, read from memory instead of a socket.
//
// The page folder is a scratch folder holding index.html, a hidden file, a
// link that leads out of it, and beside it a file that must never be served.
// Whatever comes in:
// - every answer is a well-formed status line;
// - nothing is answered 2xx, and no request reaches /api/, unless the input
//   carries the session's token;
// - neither the hidden file nor the file outside the folder is ever sent.
//
// The HTTP parsing is the system's cpp-httplib and is not instrumented:
// coverage guides through our checks and routes.
#include <httplib.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "DialogRoutes.h"
#include "TempFolder.h"

namespace {

constexpr int kPort = 8765;
constexpr std::string_view kToken = "5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed5eed";
// Contents that only those files hold; the server echoes no input, so
// seeing one in an answer means the file was sent.
constexpr std::string_view kHiddenMark = "hidden-3c9a41f0";
constexpr std::string_view kOutsideMark = "outside-7d2e85b6";
constexpr int kMostRequests = 8;

// A connection from memory: reads the input, keeps what is written.
class MemoryStream : public httplib::Stream {
public:
    explicit MemoryStream(std::string_view input) : input_(input) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* ptr, size_t size) override
    {
        const std::size_t count = std::min(size, input_.size() - position_);
        std::memcpy(ptr, input_.data() + position_, count);
        position_ += count;
        return static_cast<ssize_t>(count);
    }
    ssize_t write(const char* ptr, size_t size) override
    {
        output_.append(ptr, size);
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string& ip, int& port) const override
    {
        ip = "127.0.0.1";
        port = 40000;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override
    {
        ip = "127.0.0.1";
        port = kPort;
    }
    socket_t socket() const override { return INVALID_SOCKET; }

    bool atEnd() const { return position_ >= input_.size(); }
    const std::string& output() const { return output_; }

private:
    std::string_view input_;
    std::size_t position_ = 0;
    std::string output_;
};

// The server's request handling, open to a stream of our own.
class MemoryServer : public httplib::Server {
public:
    using httplib::Server::process_request;
};

struct Fixture {
    testsupport::TempFolder folder{"dialog_server_fuzzer"};
    korvane::DialogRoutes routes;
    MemoryServer server;
    bool tokenGiven = false;  // of the input being answered

    Fixture()
    {
        const std::filesystem::path page = folder / "page";
        std::filesystem::create_directories(page / "sub");
        std::ofstream(page / "index.html") << "<p>page</p>\n";
        std::ofstream(page / "sub" / "app.js") << "// app\n";
        std::ofstream(page / ".hidden") << kHiddenMark << '\n';
        std::ofstream(folder / "outside.txt") << kOutsideMark << '\n';
        std::filesystem::create_symlink("../outside.txt", page / "link.txt");
        routes.root = page;
        routes.token = kToken;
        routes.port = kPort;
        routes.api = [this](const korvane::ApiRequest& request) {
            if (!tokenGiven)
                __builtin_trap();
            korvane::ApiResponse response;
            response.body = "{\"bytes\":" + std::to_string(request.body.size()) + "}";
            return response;
        };
        korvane::installDialogRoutes(server, routes);
    }
};

std::unique_ptr<Fixture> fixture;

// Checks every answer's status line; returns whether any was 2xx.
bool checkAnswers(std::string_view output)
{
    bool success = false;
    std::size_t at = 0;
    while ((at = output.find("HTTP/1.1 ", at)) != std::string_view::npos) {
        if (at + 12 > output.size())
            __builtin_trap();
        const std::string_view code = output.substr(at + 9, 3);
        if (code.find_first_not_of("0123456789") != std::string_view::npos)
            __builtin_trap();
        success |= code.front() == '2';
        at += 12;
    }
    return success;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fixture = std::make_unique<Fixture>();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    fixture->tokenGiven = input.find(kToken) != std::string_view::npos;
    MemoryStream stream(input);
    for (int i = 0; i < kMostRequests && !stream.atEnd(); ++i) {
        bool closed = false;
        if (!fixture->server.process_request(stream, false, closed, nullptr) || closed)
            break;
    }
    const std::string& output = stream.output();
    if (output.find(kHiddenMark) != std::string::npos || output.find(kOutsideMark) != std::string::npos)
        __builtin_trap();
    if (checkAnswers(output) && !fixture->tokenGiven)
        __builtin_trap();
    return 0;
}
