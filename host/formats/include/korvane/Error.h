// Error.h - the one exception of the host, the command and the tools.
//
// Every failure a user can act on is a korvane::Error. Where the input says
// where it went wrong, the error keeps the place (file, line, field) and its
// message names it the way every message of ours does:
//
//     "shot.json:12: scene.width: must be a whole number from 1 to 65535"
//     "Glintwave.rsc: truncated header: ..."          (a file, no line)
//     "frame range \"1-x\": unexpected \"x\" ..."     (a field only)
//
// Derived types exist only where a caller treats a failure differently
// (PluginError carries the plug-in's result code; the command's usage
// mistakes and cancels end with their own exit statuses). Result codes stay
// at the platform's C boundary: Main, the host procedure, the KV_ toolbox.
//
// Depends on the standard library only, so every part of the host can use it.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace korvane {

// Where in the input a failure lies; every part may be absent.
struct ErrorPlace {
    explicit ErrorPlace(std::string file, int line = 0, std::string field = {})
        : file(std::move(file)), line(line), field(std::move(field))
    {
    }

    std::string file;   // "" when the input is no file
    int line = 0;       // 0 when there is no line to name
    std::string field;  // "" when no one field is to blame
};

class Error : public std::runtime_error {
public:
    explicit Error(const std::string& reason);
    Error(ErrorPlace place, const std::string& reason);

    const std::string& file() const noexcept;
    int line() const noexcept;
    const std::string& field() const noexcept;

    // "file:line: field: reason", leaving out the parts that are absent.
    static std::string compose(const ErrorPlace& place, std::string_view reason);

private:
    // Shared, so that copying the exception cannot throw.
    std::shared_ptr<const ErrorPlace> place_;
};

} // namespace korvane
