#!/bin/sh
# hygiene_test.sh ROOT: fails on what no committed file may hold. What is looked for
# stands in `offenders`; each check is tried on planted files before ROOT is looked
# at. The patterns are written so that they do not match themselves.
set -eu
export LC_ALL=C

# The files of the tree in the current folder, one a line: what git would commit,
# or, without git, all but build folders.
files() {
  if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    git -c core.quotePath=false ls-files --cached --others --exclude-standard |
      sort -u | while IFS= read -r file; do
      [ ! -f "$file" ] || printf '%s\n' "$file"
    done
  else
    find . \( -name .git -o -path './build' -o -path './build-*' \) -prune \
      -o -type f -print | sed 's|^\./||' | sort
  fi
}

# Those of the files in list $1 that are sources: code, build files, scripts.
sources() {
  while IFS= read -r file; do
    case $file in
      *.h | *.cc | *.c | *.inc | *.cmake | *.sh | *.py | CMakeLists.txt | \
        */CMakeLists.txt)
        printf '%s\n' "$file" ;;
      *.*) ;;
      *)
        case $(head -c 2 "$file" | tr -d '\000') in
          '#!') printf '%s\n' "$file" ;;
        esac
        ;;
    esac
  done <"$1"
}

# Prints "FILE:LINE:... (reason)" for lines of the files in list $2 that match the
# extended expression $3; $1 is the reason. Files that are not text are passed over,
# except for `all`, which takes every file as text.
report() {
  reason=$1 list=$2 expression=$3 kind=${4:--I}
  [ "$kind" != all ] || kind=-a
  [ -s "$list" ] || return 0
  tr '\n' '\0' <"$list" |
    xargs -0 grep -EHn "$kind" -e "$expression" |
    cut -c 1-200 | sed "s|\$|  ($reason)|" || :
}

# A header opens with #ifndef NAME, #define NAME; a name guards one header.
guards() {
  : >"$scratch/guards"
  while IFS= read -r file; do
    awk -v file="$file" '
      /^[ \t]*#/ && ++n == 1 { asked = ($1 == "#ifndef") ? $2 : "" }
      /^[ \t]*#/ && n == 2 { set = ($1 == "#define") ? $2 : ""; exit }
      END {
        if (asked == "" || asked != set)
          print file ":1:  (no include guard)"
        else
          print asked, file >>guards
      }' guards="$scratch/guards" "$file"
  done <"$1"
  sort "$scratch/guards" | awk '
    $1 == last { print $2 ":1:" $1 "  (include guard of " other ", too)" }
    { last = $1; other = $2 }'
}

# Prints every offender of the tree $1.
offenders() (
  cd "$1"
  files >"$scratch/files"
  sources "$scratch/files" >"$scratch/sources"
  grep -E '\.(h|cc|c|inc)$' "$scratch/files" >"$scratch/code" || :
  grep -E '\.h$' "$scratch/files" >"$scratch/headers" || :
  # Lists of real hosts may hold any host name.
  grep -Ev '^(examples/lists|tests/data)/' "$scratch/files" >"$scratch/own" || :

  report 'byte outside ASCII' "$scratch/sources" '[^[:print:][:space:]]' all
  report 'path of one machine' "$scratch/files" \
    '(^|[^A-Za-z0-9_./-])/(home|root|Users|work)/'
  report 'registry host' "$scratch/own" \
    '(^|[^A-Za-z0-9])(registr[y]\.[a-z0-9-]+\.[a-z]|([a-z0-9-]+\.)*(ghc[r]\.io|gc[r]\.io|qua[y]\.io|docke[r]\.io|pyp[i]\.org|pythonhoste[d]\.org|npmj[s]\.(org|com)|crate[s]\.io|golan[g]\.org|rubygem[s]\.org|artifactor[y]\.|pk[g]\.dev|debia[n]\.org))'
  report 'unfinished' "$scratch/files" \
    '(^|[^A-Za-z0-9_])(TO[D]O|FIX[M]E|X[X]X)([^A-Za-z0-9_]|$)'
  report 'tab' "$scratch/code" '	'
  report 'blank at the end of a line' "$scratch/code" '[[:space:]]$'
  guards "$scratch/headers"
)

scratch=$(mktemp -d)
export GIT_CEILING_DIRECTORIES="$scratch"
trap 'rm -rf "$scratch"' EXIT

# plant FILE TEXT: a tree that holds nothing but this file; TEXT is a printf format.
plant() {
  rm -rf "$scratch/root"
  mkdir -p "$scratch/root/$(dirname "$1")"
  # shellcheck disable=SC2059
  printf "$2" >"$scratch/root/$1"
}

refuses() {
  plant "$2" "$3"
  case $(offenders "$scratch/root") in
    "$2:"*"($1"*) ;;
    *) echo "self-test: $1 in $2 was not found" && exit 1 ;;
  esac
}

accepts() {
  plant "$1" "$2"
  found=$(offenders "$scratch/root")
  [ -z "$found" ] || { echo "self-test: wrongly found: $found" && exit 1; }
}

h=home r=root w=work u=Users
refuses 'byte outside ASCII' url/euc.cc 'int a;\n// caf\303\251\n'
refuses 'byte outside ASCII' url/url.h '// \245\n'
refuses 'byte outside ASCII' url/null.c 'int a\000;\n'
refuses 'byte outside ASCII' CMakeLists.txt '# \302\240\n'
refuses 'byte outside ASCII' cmake/Install.cmake '# \302\240\n'
refuses 'byte outside ASCII' scripts/run '#!/bin/sh\n# \303\251\n'
refuses 'path of one machine' README.md "cd /$h/me/urldb\n"
refuses 'path of one machine' scripts/run "cd \"/$r/urldb\"\n"
refuses 'path of one machine' docs/trie.md "(/$u/me/x)\n"
refuses 'path of one machine' tests/a_test.cc "f(\"/$w/main\");\n"
refuses 'path of one machine' .ci/run "/$w/main/scripts/test\n"
refuses 'registry host' docs/lists.md 'from https://registr''y.example.org/x\n'
refuses 'registry host' scripts/setup 'image=ghc''r.io/x/y\n'
refuses 'registry host' CMakeLists.txt '# https://pyp''i.org/simple\n'
refuses 'unfinished' common/list.cc '// TO''DO: later\n'
refuses 'unfinished' docs/trie.md 'FIX''ME\n'
refuses 'unfinished' scripts/run '# X''XX\n'
refuses 'tab' common/list.cc 'int\ta;\n'
refuses 'blank at the end' common/list.c 'int a; \n'
refuses 'blank at the end' common/list.cc 'int a;\r\n'
refuses 'no include guard' common/list.h 'class List;\n'
refuses 'no include guard' common/list.h '#ifndef A_H_\n#define B_H_\n#endif\n'
accepts common/list.h '// A list.\n#ifndef A_H_\n#define A_H_\n#endif\n'
accepts docs/lists.md 'caf\303\251 \tand a blank \n'
accepts tests/url_test.cc "f(\"http://h.example/$h/x\", \"a/$w/b\");\n"
accepts scripts/run 'mktemp -d /tmp/x.XXXXXX\n'
accepts examples/lists/press/domains 'registr''y.example.org\n'

plant common/a.h '#ifndef A_H_\n#define A_H_\n#endif\n'
cp "$scratch/root/common/a.h" "$scratch/root/common/b.h"
case $(offenders "$scratch/root") in
  "common/b.h:1:A_H_  (include guard of common/a.h, too)") ;;
  *) echo 'self-test: a guard used twice was not found' && exit 1 ;;
esac

found=$(offenders "$1")
if [ -n "$found" ]; then
  printf '%s\n' "$found"
  exit 1
fi
[ -s "$scratch/code" ] || { echo "no sources below $1" && exit 1; }
