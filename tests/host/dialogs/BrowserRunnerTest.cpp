// BrowserRunnerTest.cpp - Glintwave's settings dialog run by the browser
// runner, with this test as the page: actions posted over HTTP run in the
// plug-in's dialog; refused ones say why; a page that goes away cancels.
#include "glintwave/GlintwaveRecords.h"
#include "TempFolder.h"
#include "korvane/BrowserRunner.h"
#include "korvane/PluginHost.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <fstream>
#include <thread>

namespace {

using namespace std::chrono_literals;

struct Step {
    std::string action;  // JSON; empty: only ask for the state once
    bool refused = false;
};

TEST(BrowserRunner, ActionsFromThePageRunInTheDialog)
{
    struct Case {
        const char* label;
        std::vector<Step> steps;
        std::int32_t result;
        korvane::BrowserRunner::Ending ending;
        std::int32_t style;
    };
    using Ending = korvane::BrowserRunner::Ending;
    const Case cases[] = {
        {"a style, then OK",
         {{R"({"kind":"value","id":5,"value":2})"}, {R"({"kind":"accept"})"}}, 0, Ending::user, 3},
        {"a drag, then Cancel",
         {{R"({"kind":"press","id":16,"x":10,"y":10})"}, {R"({"kind":"move","x":200,"y":100})"},
          {R"({"kind":"release","x":210,"y":100})"}, {R"({"kind":"cancel"})"}},
         kPluginUserCanceled, Ending::user, 1},
        {"refused actions",
         {{R"({"kind":"value","id":5,"value":99})", true}, {R"({"kind":"jump"})", true},
          {R"({"kind":"text","id":7,"text":"x"})", true}, {R"({"kind":"accept"})"}},
         0, Ending::user, 1},
        {"the page goes away", {{""}}, kPluginUserCanceled, Ending::browserGone, 1},
    };
    testsupport::TempFolder folder;
    std::ofstream(folder / "index.html") << "<p>page</p>";

    for (const Case& c : cases) {
        korvane::PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
        korvane::PluginInstance instance(library);
        instance.require(kCmdInitialize, instance.init());
        korvane::BrowserRunner runner({folder.path(), 0, 300ms, 100ms, {}});
        const std::string url = runner.url();
        const std::string token = url.substr(url.find("token=") + 6);
        const int port = std::stoi(url.substr(std::strlen("http://127.0.0.1:")));

        std::vector<std::string> errors;
        std::thread page([&] {
            httplib::Client client("127.0.0.1", port);
            const httplib::Headers headers = {{"X-Korvane-Token", token}};
            for (const Step& step : c.steps) {
                if (step.action.empty()) {
                    client.Get("/api/state", headers);
                    continue;
                }
                const auto response = client.Post("/api/event", headers, step.action, "application/json");
                errors.push_back(response ? nlohmann::json::parse(response->body).value("error", "?") : "no answer");
            }
        });
        std::int32_t result = 0;
        {
            const korvane::DialogRunnerScope scope(runner);
            result = instance.interface();
        }
        page.join();

        EXPECT_EQ(result, c.result) << c.label;
        EXPECT_EQ(runner.ending(), c.ending) << c.label;
        for (std::size_t i = 0; i < errors.size(); ++i)
            EXPECT_EQ(!errors[i].empty(), c.steps[i].refused) << c.label << ", step " << i << ": " << errors[i];
        ControlDataRec settings{};
        std::memcpy(&settings, instance.controlData().data(), sizeof settings);
        const std::int32_t style = settings.flareLens;
        EXPECT_EQ(style, c.style) << c.label;
    }
}

} // namespace
