// Error.cpp - composing the message of an error from its place and reason.

#include "korvane/Error.h"

namespace korvane {
namespace {

const ErrorPlace& nowhere()
{
    static const ErrorPlace place("");
    return place;
}

} // namespace

Error::Error(const std::string& reason) : std::runtime_error(reason) {}

Error::Error(ErrorPlace place, const std::string& reason)
    : std::runtime_error(compose(place, reason)), place_(std::make_shared<const ErrorPlace>(std::move(place)))
{
}

const std::string& Error::file() const noexcept
{
    return (place_ ? *place_ : nowhere()).file;
}

int Error::line() const noexcept
{
    return place_ ? place_->line : 0;
}

const std::string& Error::field() const noexcept
{
    return (place_ ? *place_ : nowhere()).field;
}

std::string Error::compose(const ErrorPlace& place, std::string_view reason)
{
    std::string message = place.file;
    if (!place.file.empty() && place.line > 0)
        message += ":" + std::to_string(place.line);
    if (!message.empty())
        message += ": ";
    if (!place.field.empty())
        message += place.field + ": ";
    message += reason;
    return message;
}

} // namespace korvane
