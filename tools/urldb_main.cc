#include <CLI/CLI.hpp>
#include <csignal>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "common/error.h"
#include "tools/build_command.h"
#include "tools/categories_command.h"
#include "tools/check_command.h"
#include "tools/dump_command.h"
#include "tools/escape.h"
#include "tools/info_command.h"
#include "tools/key_command.h"
#include "tools/lookup_command.h"
#include "tools/output.h"
#include "tools/program_error.h"

namespace urldb {

namespace {

constexpr int kUnusable = 2;  // wrong usage, or a file that cannot be used

constexpr const char* kFooter =
    "Exit status: 0 done, 1 some input was refused or the database is not\n"
    "sound, 2 wrong usage or a file that cannot be used.\n"
    "\n"
    "Examples:\n"
    "  urldb build -o my.db lists/            # a folder for each category\n"
    "  urldb build -o my.db news=sites.txt    # one list for one category\n"
    "  urldb lookup -d my.db http://www.example.com/\n"
    "  urldb lookup -d my.db --explain www.example.com/a/b?c\n"
    "  urldb lookup -d my.db < urls.txt > answers.txt\n"
    "  urldb info -d my.db\n"
    "\n"
    "'urldb COMMAND --help' explains a command.";

int complain(const std::string& text) {
  std::cerr << "urldb: " << escapeText(text) << std::endl;
  return kUnusable;
}

// CLI11 takes "++" for the end of a command, and would go on without a word.
void refuseCommandEnd(int argc, char** argv) {
  for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
    if (std::strcmp(argv[i], "++") == 0)
      throw ProgramError("++: write it after --");
  }
}

int run(int argc, char** argv) {
  CLI::App app(
      "Builds databases that know the categories of URLs, and asks them.\n",
      "urldb");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.set_version_flag("--version", "urldb " URLDB_VERSION,
                       "Print the version and exit");
  app.require_subcommand(1);
  app.get_formatter()->column_width(24);
  app.footer(kFooter);

  int status = 0;
  addBuildCommand(app, &status);
  addLookupCommand(app, &status);
  addKeyCommand(app, &status);
  addInfoCommand(app, &status);
  addCheckCommand(app, &status);
  addDumpCommand(app, &status);
  addCategoriesCommand(app, &status);

  try {
    refuseCommandEnd(argc, argv);
    app.parse(argc, argv);
    return status;
  } catch (const CLI::CallForHelp&) {
    Output out(1);
    out.write(app.help());
    out.flush();
    return 0;
  } catch (const CLI::CallForVersion& version) {
    Output out(1);
    out.write(std::string(version.what()) + "\n");
    out.flush();
    return 0;
  } catch (const CLI::ParseError& error) {
    const auto commands = app.get_subcommands();
    const std::string name =
        commands.empty() ? "" : commands.front()->get_name() + " ";
    return complain(std::string(error.what()) + "; try 'urldb " + name +
                    "--help'");
  }
}

}  // namespace

}  // namespace urldb

int main(int argc, char** argv) {
  using urldb::complain;
  // A closed pipe is an error of the write then, which Output knows; a signal
  // could end a build half-way.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a limit on file sizes likewise
  try {
    return urldb::run(argc, argv);
  } catch (const urldb::ReaderGone&) {
    return urldb::kUnusable;
  } catch (const urldb::ErrException& error) {
    return complain(error.getMessage());
  } catch (const std::bad_alloc&) {
    return complain("out of memory");
  } catch (const std::exception& error) {
    return complain(error.what());
  }
}
