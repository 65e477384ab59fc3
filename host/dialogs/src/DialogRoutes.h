// DialogRoutes.h - what the dialog server answers, apart from listening:
// the checks every request passes first, the page's files, and /api/
// handed to the dialog's runner (rules in DialogServer.h).
//
// Kept apart from the listening socket so that the same answers can be
// given to requests that come from memory rather than from the network.
#pragma once

#include "korvane/DialogServer.h"

#include <filesystem>
#include <string>

namespace httplib {
class Server;
}

namespace korvane {

struct DialogRoutes {
    std::filesystem::path root;
    std::string token;
    int port = 0;  // the port a request's Host and Origin must name
    ApiHandler api;
};

// Installs the checks, the routes and the body limit on `server`. The
// handlers read `routes` when a request comes, so it must outlive the
// server, and its port may be set after this call (once bound).
void installDialogRoutes(httplib::Server& server, const DialogRoutes& routes);

} // namespace korvane
