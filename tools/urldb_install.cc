// The install tool: puts the database that the installer laid down into its
// working place and removes the shipped file.

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>

#include "urldb/urldb.h"

namespace {

constexpr char kShipped[] = "/opt/Tarvex/KV/data/db/urldb.org";
constexpr char kWorking[] = "/opt/Tarvex/KV/data/db/urldb";

constexpr char kUsage[] = "usage: urldb-install [--help | --version]\n";
constexpr char kHelp[] =
    "\n"
    "Without arguments: copies the shipped URL database\n"
    "  /opt/Tarvex/KV/data/db/urldb.org\n"
    "to the working database\n"
    "  /opt/Tarvex/KV/data/db/urldb\n"
    "and removes the shipped file, whether it could be copied or not. Prints\n"
    "nothing and ends with status 0.\n"
    "\n"
    "  --help     print this text\n"
    "  --version  print the version\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::printf("%s%s", kUsage, kHelp);
    return 0;
  }
  if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("urldb-install %s\n", URLDB_VERSION);
    return 0;
  }
  if (argc > 1) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  // A file-size limit is a failed copy like any other, not the end of the tool.
  std::signal(SIGXFSZ, SIG_IGN);
  // Deliberately without a look at the result: an installation that cannot use
  // the shipped file must not find it again, and must go on.
  URLDB_copy(kShipped, kWorking);
  unlink(kShipped);
  return 0;
}
