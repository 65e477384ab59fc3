// NumberText.h - numbers as users read and type them.
//
// One rule for every number the host and the command show (option values,
// help ranges, project keys, the options an image records): the shortest
// decimal text that reads back as the same double. So 0.3 shows as "0.3",
// 2 as "2", 1/3 as "0.3333333333333333", and any number shown can be typed
// back without a change of even its last bit. Measurements meant only for
// reading (seconds, megabytes) are rounded where they are reported.
#pragma once

#include <string>

namespace korvane {

std::string formatNumber(double value);

} // namespace korvane
