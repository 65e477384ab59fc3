// DialogServerTest.cpp - what the dialog page's local server refuses, asked
// over real connections.
#include "TempFolder.h"
#include "korvane/DialogServer.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <fstream>

namespace {

void writeFile(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream(path) << text;
}

TEST(DialogServer, ServesOnlyThePageToItsOwnSession)
{
    testsupport::TempFolder folder;
    const std::filesystem::path web = folder / "web";
    std::filesystem::create_directories(web / "lib");
    writeFile(web / "index.html", "<p>page</p>");
    writeFile(web / "lib" / "app.js", "page();");
    writeFile(web / ".hidden", "secret");
    writeFile(folder / "secret.txt", "secret");
    std::filesystem::create_symlink(folder / "secret.txt", web / "leak.txt");

    // The endpoints answer with what they were asked.
    korvane::DialogServer server(web, korvane::makeToken(), [](const korvane::ApiRequest& request) {
        return korvane::ApiResponse{200, "text/plain", request.method + " " + request.path + " " + request.body, {}};
    });
    ASSERT_EQ(server.token().size(), 64u);
    const std::string port = std::to_string(server.port());
    const std::string own = "?token=" + server.token();
    EXPECT_EQ(server.url(), "http://127.0.0.1:" + port + "/" + own);

    struct Case {
        const char* label;
        std::string path;
        httplib::Headers headers;
        int status;
        bool post = false;
    };
    const httplib::Headers withToken = {{"X-Korvane-Token", server.token()}};
    const Case cases[] = {
        {"the page", "/" + own, {}, 200},
        {"a page file, token in a header", "/lib/app.js", {{"X-Korvane-Token", server.token()}}, 200},
        {"token in the cookie", "/lib/app.js", {{"Cookie", "a=b; korvane-token=" + server.token()}}, 200},
        {"same origin", "/" + own, {{"Origin", "http://127.0.0.1:" + port}}, 200},
        {"no token", "/", {}, 403},
        {"wrong token", "/?token=" + std::string(64, '0'), {}, 403},
        {"token cut short", "/?token=" + server.token().substr(1), {}, 403},
        {"foreign origin", "/" + own, {{"Origin", "http://evil.example"}}, 403},
        {"foreign host", "/" + own, {{"Host", "evil.example:" + port}}, 403},
        {"other port in the host", "/" + own, {{"Host", "127.0.0.1:1"}}, 403},
        {"parent folder", "/../secret.txt" + own, {}, 404},
        {"escaped parent folder", "/%2e%2e/secret.txt" + own, {}, 404},
        {"through a link", "/leak.txt" + own, {}, 404},
        {"hidden file", "/.hidden" + own, {}, 404},
        {"a folder", "/lib" + own, {}, 404},
        {"no such file", "/none.js" + own, {}, 404},
        {"an endpoint", "/api/state" + own, {}, 200},
        {"an event", "/api/event", withToken, 200, true},
        {"an event without the token", "/api/event", {}, 403, true},
        {"an event with a wrong token", "/api/event", {{"X-Korvane-Token", std::string(64, 'a')}}, 403, true},
        {"an event from another site", "/api/event" + own, {{"Origin", "http://evil.example"}}, 403, true},
    };
    httplib::Client client("127.0.0.1", server.port());
    for (const Case& c : cases) {
        const auto response = c.post ? client.Post(c.path.c_str(), c.headers, "{}", "application/json")
                                     : client.Get(c.path.c_str(), c.headers);
        ASSERT_TRUE(response) << c.label;
        EXPECT_EQ(response->status, c.status) << c.label;
        if (c.status == 200 && c.path.starts_with("/api/")) {
            EXPECT_EQ(response->body, std::string(c.post ? "POST /api/event {}" : "GET /api/state ")) << c.label;
        }
        EXPECT_EQ(response->body.find("secret"), std::string::npos) << c.label;
        EXPECT_EQ(response->get_header_value("Referrer-Policy"), "no-referrer") << c.label;
    }
}

} // namespace
