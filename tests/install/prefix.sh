#!/usr/bin/env bash
# prefix.sh CMAKE BUILD: installs BUILD into a fresh prefix (with a space in
# its path) and checks that the installed glintwave works from there alone:
# the layout, no RPATH into the build tree, `info` naming the installed
# plug-in, a rendered PNG, and `edit --no-open` serving the installed page
# until SIGINT ends it.
set -uo pipefail
cmake=$1 build=$2

fail() { echo "install test FAILED: $*" >&2; exit 1; }

work=$(mktemp -d)
editor=
cleanup() {
  [[ -n $editor ]] && kill -KILL "$editor" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
work=$(realpath "$work")
prefix="$work/the prefix"

"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 || {
  cat "$work/install.log" >&2
  fail "cmake --install $build"
}
glintwave="$prefix/bin/glintwave"
plugin="$prefix/lib/glintwave/plugin/Glintwave.so"

for file in bin/glintwave bin/glintwave-rsc lib/glintwave/plugin/Glintwave.so lib/glintwave/plugin/Glintwave.rsc \
            share/glintwave/web/index.html share/glintwave/slurm-render.sh; do
  [[ -f "$prefix/$file" ]] || fail "$file is not installed"
done
for program in bin/glintwave bin/glintwave-rsc share/glintwave/slurm-render.sh; do
  [[ -x "$prefix/$program" ]] || fail "$program is not executable"
done
for binary in bin/glintwave bin/glintwave-rsc lib/glintwave/plugin/Glintwave.so; do
  if readelf -d "$prefix/$binary" | grep -E 'RPATH|RUNPATH' | grep -qF "$build"; then
    fail "$binary keeps an RPATH into the build tree: $(readelf -d "$prefix/$binary" | grep -E 'RPATH|RUNPATH')"
  fi
done

cd "$work" || fail "cd $work"

# The installed command loads the installed plug-in.
"$glintwave" info >info.txt 2>&1 || { cat info.txt >&2; fail "glintwave info"; }
grep -qF "plug-in      $plugin" info.txt || { cat info.txt >&2; fail "info does not name $plugin"; }

# A frame: a file that starts with the PNG signature.
"$glintwave" render -q --size 64x36 -o out.png || fail "glintwave render"
[[ $(head -c 8 out.png | od -An -tx1 | tr -d ' \n') == 89504e470d0a1a0a ]] || fail "out.png is not a PNG"

# The dialog's page, served from the installed folder: a mark added to the
# installed copy must come back.
mark="<!-- the installed page $$ -->"
echo "$mark" >>"$prefix/share/glintwave/web/index.html"
"$glintwave" project new shot.json >/dev/null || fail "glintwave project new"
cp shot.json shot.before.json
"$glintwave" edit shot.json --no-open >edit.out 2>edit.err &
editor=$!
url=
for _ in $(seq 300); do
  url=$(grep -oE 'http://127\.0\.0\.1:[0-9]+/\?token=[0-9a-f]+' edit.out | head -n 1)
  [[ -n $url ]] && break
  kill -0 "$editor" 2>/dev/null || { cat edit.err >&2; fail "glintwave edit ended before serving"; }
  sleep 0.1
done
[[ -n $url ]] || fail "glintwave edit printed no address in 30 s"
curl -fsS --max-time 10 "$url" >page.html || fail "could not fetch $url"
grep -qF "<title>Settings dialog</title>" page.html || fail "$url is not the settings dialog's page"
grep -qF "$mark" page.html || fail "$url is not the installed page"

# Ctrl-C ends it: status 130, the project untouched.
kill -INT "$editor"
for _ in $(seq 300); do
  kill -0 "$editor" 2>/dev/null || break
  sleep 0.1
done
kill -0 "$editor" 2>/dev/null && fail "glintwave edit still runs 30 s after SIGINT"
wait "$editor"
status=$?
editor=
[[ $status -eq 130 ]] || { cat edit.err >&2; fail "glintwave edit ended with status $status after SIGINT, not 130"; }
cmp -s shot.json shot.before.json || fail "glintwave edit changed shot.json although it was interrupted"
echo "install test: $prefix works on its own"
