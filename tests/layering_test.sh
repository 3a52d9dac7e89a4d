#!/bin/sh
# layering_test.sh ROOT: fails when an include under ROOT points upward, or when it
# names a header of the project in another way than by its path from the root. The
# check is tried on trees with one planted offender each before ROOT is looked at.
set -eu

folders='common url urldb conf ipc tools tests bench'

# The folders that sources in folder $1 may include from.
below() {
  case $1 in
    common) echo 'common' ;;
    url) echo 'url common' ;;
    urldb) echo 'urldb url common' ;;
    conf) echo 'conf common' ;;
    ipc) echo 'ipc conf url common' ;;
    tools) echo 'tools ipc urldb conf url common' ;;
    tests) echo 'tests tools ipc urldb conf url common' ;;
    bench) echo 'bench tests tools ipc urldb conf url common' ;;
  esac
}

# Prints "FILE:LINE: what is wrong" for every offender under $1.
offenders() (
  cd "$1"
  for folder in $folders; do
    [ -d "$folder" ] || continue
    find "$folder" -type f \( -name '*.h' -o -name '*.cc' -o -name '*.c' \
      -o -name '*.inc' \) -print
  done | LC_ALL=C sort | while IFS= read -r file; do
    folder=${file%%/*}
    awk -v file="$file" -v folder="$folder" -v all="$folders" \
      -v allowed="$(below "$folder")" '
      BEGIN {
        n = split(all, names, " ")
        for (i = 1; i <= n; i++) known[names[i]] = 1
        n = split(allowed, names, " ")
        for (i = 1; i <= n; i++) good[names[i]] = 1
      }
      /^[ \t]*#[ \t]*include[ \t]*["<]/ {
        path = $0
        sub(/^[ \t]*#[ \t]*include[ \t]*/, "", path)
        quoted = substr(path, 1, 1) == "\""
        path = substr(path, 2)
        sub(/[">].*/, "", path)
        top = path
        sub(/\/.*/, "", top)
        where = file ":" FNR ": "
        if (path ~ /(^|\/)\.\.?(\/|$)/)
          print where "\"" path "\" is not a path from the root"
        else if (quoted && (top == path || !(top in known)))
          print where "\"" path "\" does not name a folder of the project"
        else if (top != path && (top in known) && !(top in good))
          print where folder "/ must not include \"" path "\""
      }' "$file"
  done
)

tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT

# plant FILE INCLUDE: a tree that holds nothing but this include.
plant() {
  rm -rf "$tree/root"
  mkdir -p "$tree/root/$(dirname "$1")"
  printf '#include <vector>\n#include %s\n' "$2" >"$tree/root/$1"
}

refuses() {
  plant "$1" "$2"
  case $(offenders "$tree/root") in
    "$1:2: "*) ;;
    *) echo "self-test: $1 with #include $2 was not found" && exit 1 ;;
  esac
}

accepts() {
  plant "$1" "$2"
  found=$(offenders "$tree/root")
  [ -z "$found" ] || { echo "self-test: wrongly found: $found" && exit 1; }
}

refuses common/list.h '"url/url.h"'
refuses common/list.cc '"urldb/urldb.h"'
refuses url/url.cc '"urldb/double_array.h"'
refuses url/url.h '"conf/config_file.h"'
refuses urldb/urldb.cc '"tools/escape.h"'
refuses urldb/urldb.cc '"conf/configuration.h"'
refuses urldb/urldb.cc '"ipc/semaphore.h"'
refuses conf/dirs_conf.h '"url/url.h"'
refuses ipc/urldb_client.c '"urldb/urldb.h"'
refuses ipc/semaphore.h '<urldb/urldb.h>'
refuses tools/urldb_main.cc '"tests/run_program.h"'
refuses tests/url_test.cc '"bench/keys.h"'
refuses url/url.cc '"url.h"'
refuses url/url.cc '"../common/list.h"'
refuses url/url.cc '"url/../common/list.h"'
refuses url/url.cc '"./url/url.h"'
refuses url/url.cc '"src/url.h"'
accepts url/url.h '"common/list.h"'
accepts url/url.h '"url/euc_conv.h"'
accepts urldb/urldb.cc '"url/euc_conv.h"'
accepts conf/config_file.cc '"common/line_reader.h"'
accepts ipc/urldb_client.cc '"conf/configuration.h"'
accepts tools/lookup.cc '"ipc/urldb_client.h"'
accepts tests/fuzz/loader.cc '"tools/list_entry.h"'
accepts bench/lookup.cc '"urldb/urldb.h"'
accepts urldb/file.cc '<sys/stat.h>'
accepts tools/main.cc '<CLI/CLI.hpp>'

found=$(offenders "$1")
if [ -n "$found" ]; then
  printf '%s\n' "$found"
  exit 1
fi
sources=$(cd "$1" && find common url urldb -name '*.h' | wc -l)
[ "$sources" -gt 0 ] || { echo "no headers below $1" && exit 1; }
