// Spelling.h - one spelling for each word a user types, the other one read.
//
// Options, project keys and channel paths are written with "color" (as the
// channel paths the plug-in registers and the --*-color options spell it)
// and "grey" (as the settings dialog labels its "Grey rings" and "Grey
// streaks" boxes, which --grey-rings and --grey-streaks follow). What users
// give may use the other spelling: option aliases (--light-colour,
// --gray-rings), project keys ("colour"), channel paths ("Halo/Colour") and
// control labels ("Halo color") are read through canonicalSpelling.
#pragma once

#include <string>
#include <string_view>

namespace korvane {

// The text with every accepted spelling replaced by the chosen one.
std::string canonicalSpelling(std::string_view text);

// The text with every chosen spelling replaced by the accepted one: the
// alias of an option name. Equal to the text when it holds no such word.
std::string acceptedSpelling(std::string_view text);

} // namespace korvane
