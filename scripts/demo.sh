#!/usr/bin/env bash
# The first command: installs what is missing, builds, renders a flare over
# the demo photograph and the contact sheet of every style, and says where
# they are.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
"$root/scripts/build.sh" "$root/build"

glintwave="$root/build/cli/glintwave"
out="$root/build/demo"
mkdir -p "$out"
echo
echo "Rendering the demo:"
# The light sits on the rocket's nose-cone floodlight, a little right of the
# frame centre, so the reflections cross the picture to the lower left.
"$glintwave" render --style 1 --over "$root/demo/rocket.jpg" --light 0.56,0.62 -o "$out/rocket-flare.png"
"$glintwave" sheet -o "$out/sheet.png"
echo
echo "Built in $root/build:"
echo "  build/cli/glintwave       the command: glintwave render|styles|sheet|info --help"
echo "  build/plugin/             the plug-in folder: Glintwave.so and Glintwave.rsc"
echo "  build/tools/glintwave-rsc the resource compiler and dumper"
echo "Pictures:"
echo "  $out/rocket-flare.png   a flare over demo/rocket.jpg"
echo "  $out/sheet.png          every flare style"
