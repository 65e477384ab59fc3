#!/usr/bin/env bash
# The main job: set up, build everything, and show what was built.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
"$root/scripts/build.sh" "$root/build"
echo
echo "Built in $root/build:"
echo "  plug-in folder   build/plugin/"
ls -l "$root/build/plugin" | sed -n '2,$p' | awk '{printf "    %-20s %8d bytes\n", $9, $5}'
if [[ -x "$root/build/tools/glintwave-rsc" ]]; then
  echo "  resource tool    build/tools/glintwave-rsc (dump build/plugin/Glintwave.rsc shows its styles and dialogs)"
fi
echo
echo "Rendering the demo frames:"
"$root/build/cli/glintwave-demo" --out "$root/build/demo"
