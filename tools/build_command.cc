#include "tools/build_command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "common/error.h"
#include "common/file_descriptor.h"
#include "tools/build_report.h"
#include "tools/database_builder.h"
#include "tools/escape.h"
#include "tools/hierarchy_file.h"
#include "tools/interruption.h"
#include "tools/line_source.h"
#include "tools/list_reader.h"
#include "tools/number_option.h"
#include "tools/open_database.h"
#include "tools/program_error.h"
#include "tools/progress_line.h"
#include "tools/safe_file.h"
#include "tools/source_tree.h"
#include "tools/text_arguments.h"
#include "urldb/database_check.h"
#include "urldb/database_freshness.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

constexpr std::size_t kFaultsShown = 10;
constexpr std::size_t kMostBytesShown = 512;  // of a refused entry

// What a user is told while a build runs. Messages that cannot be written are
// lost, since a build that works is worth more than they are.
class Messages {
 public:
  explicit Messages(Output& output) : output_(output) {}

  void line(const std::string& text) {
    progress_.clear();
    try {
      output_.write(escapeText(text) + "\n");
    } catch (const ProgramError&) {
    } catch (const ReaderGone&) {
    }
  }

  void refusal(const std::string& path, uint64_t number, std::string_view entry,
               std::string_view reason) {
    std::string text = path + ":" + std::to_string(number) + ": ";
    text.append(reason).append(": \"").append(entry.substr(0, kMostBytesShown));
    line(text + (entry.size() > kMostBytesShown ? "...\"" : "\""));
  }

  void progress(const std::string& phase, const std::string& detail = {}) {
    write();
    progress_.show(phase, detail);
  }

  void flush() {
    progress_.clear();
    write();
  }

 private:
  void write() {
    try {
      output_.flush();
    } catch (const ProgramError&) {
    } catch (const ReaderGone&) {
    }
  }

  Output& output_;
  ProgressLine progress_;
};

// Hands the entries of one list to the builder and its refusals to the user.
class BuilderSink : public ListSink {
 public:
  BuilderSink(std::string path, DatabaseBuilder* builder, Messages* messages)
      : path_(std::move(path)), builder_(builder), messages_(messages) {}

  void take(std::span<const std::string> keys,
            std::span<const Category> categories) override {
    builder_->add(keys, categories);
  }

  void refuse(uint64_t line, std::string_view entry,
              std::string_view reason) override {
    messages_->refusal(path_, line, entry, reason);
  }

 private:
  std::string path_;
  DatabaseBuilder* builder_;
  Messages* messages_;
};

class Build {
 public:
  // `messages` stays the caller's.
  Build(const BuildOptions& options, Messages& messages)
      : options_(options), messages_(messages) {}

  // Does all of it. Throws before the file is replaced, or not at all.
  void run() {
    std::vector<ListSource> sources;
    sources.reserve(options_.sources.size());
    for (const std::string& argument : options_.sources)
      sources.push_back(findLists(argument));
    // Before anything is read: a folder that cannot be written shows at once.
    SafeFile file(options_.file);

    auto builder = std::make_unique<DatabaseBuilder>();
    if (options_.hierarchy)
      readHierarchyFile(*options_.hierarchy, builder.get());
    if (options_.base) readBase(*options_.base, builder.get());
    std::vector<std::size_t> bounds;  // entries before each list, and after all
    for (const ListSource& source : sources)
      readSource(source, builder.get(), &bounds);
    bounds.push_back(builder->entries());

    messages_.progress("sorting");
    interruption_.check();
    const KeyTotals totals = builder->finish();
    if (totals.keys == 0)
      throw ProgramError("no usable entry: " + options_.file +
                         " is left as it was");
    report_.keys = totals.keys;
    report_.inherited = totals.inherited;
    report_.categories = builder->categories();
    countKept(*builder, bounds);
    write(std::move(builder), file);
    messages_.flush();
    interruption_.check();
    if (!file.commit())
      messages_.line("urldb: " + options_.file +
                     ": replaced, but its folder could not be flushed");
  }

  const BuildReport& report() const { return report_; }

  bool anyRefused() const {
    return otherRefusals_ > 0 || totalOf(report_).refused > 0;
  }

 private:
  // Opens a list and reads it through `read`; between two pieces of it, signals
  // are noticed and the progress is shown.
  template <class Read>
  auto readLines(const ListFile& list, Read read) {
    messages_.progress("reading " + list.path);
    interruption_.check();
    const FileDescriptor fd = [&] {
      try {
        return openList(list);
      } catch (const ProgramError&) {
        interruption_.check();  // a signal may be what ended the wait
        throw;
      }
    }();
    LineSource lines(fd.get(), [&] {
      messages_.progress("reading " + list.path);
      interruption_.waitReadable(fd.get());
    });
    try {
      return read(lines);
    } catch (const ErrException& error) {
      throw ProgramError(list.path + ": " + error.getMessage());
    }
  }

  void readBase(const std::string& path, DatabaseBuilder* builder) {
    messages_.progress("reading " + path);
    interruption_.check();
    requireFileName(path);
    // It is read twice.
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
      throw ProgramError(path + ": not a regular file");
    URLDB base;
    try {
      openDatabase(&base, path);
    } catch (const ProgramError&) {
      interruption_.check();  // a signal may be what ended the opening
      throw;
    }
    interruption_.check();
    requireSound(base, path, ": not a sound database");
    builder->startFrom(base);
  }

  void requireSound(const URLDB& db, const std::string& path,
                    const char* otherwise) {
    const auto faults = checkDatabase(db, kFaultsShown);
    if (faults.empty()) return;
    for (const std::string& fault : faults)
      messages_.line(std::string(path).append(": ").append(fault));
    messages_.flush();
    throw ProgramError(path + otherwise);
  }

  void readHierarchyFile(const std::string& path, DatabaseBuilder* builder) {
    const ListFile file{path, path, std::nullopt, true};
    const auto refuse = [&](uint64_t line, std::string_view text,
                            std::string_view reason) {
      ++otherRefusals_;
      messages_.refusal(path, line, text, reason);
    };
    builder->setHierarchy(readLines(
        file, [&](LineSource& lines) { return readHierarchy(lines, refuse); }));
  }

  void readSource(const ListSource& source, DatabaseBuilder* builder,
                  std::vector<std::size_t>* bounds) {
    SourceReport& report = report_.sources.emplace_back(
        SourceReport{source.argument, source.folder, {}});
    for (const ListFile& list : source.lists) {
      bounds->push_back(builder->entries());
      BuilderSink sink(list.path, builder, &messages_);
      const ListCounts counts = readLines(list, [&](LineSource& lines) {
        return readList(lines, list.category, sink);
      });
      report.rows.push_back(
          {list.shownName, counts.lines, 0, counts.taken, counts.refused});
    }
    for (const RefusedPath& refused : source.refused) {
      bounds->push_back(builder->entries());
      report.rows.push_back({refused.shownName, 0, 0, 0, 1});
      messages_.line(refused.path + ": " + refused.reason);
    }
    if (source.folder && report.rows.empty())
      messages_.line("urldb: " + source.argument +
                     ": no folder in it holds domains or urls");
  }

  // Tells the duplicates from the entries that were taken.
  void countKept(const DatabaseBuilder& builder,
                 const std::vector<std::size_t>& bounds) {
    std::size_t i = 0;
    for (SourceReport& source : report_.sources) {
      for (ReportRow& row : source.rows) {
        row.kept = builder.keptEntries(bounds[i], bounds[i + 1]);
        row.duplicate -= row.kept;
        ++i;
      }
    }
  }

  // Fills the temporary file and makes sure of what stands in it.
  void write(std::unique_ptr<DatabaseBuilder> builder, SafeFile& file) {
    const std::string& path = file.temporaryPath();
    {
      CategoryNames names;  // outlives the database that uses it
      URLDB db;
      const char* const base = options_.base ? options_.base->c_str() : nullptr;
      builder->build(&db, &names, base, [&](std::size_t done) {
        interruption_.check();
        messages_.progress("adding keys", ": " + std::to_string(done) + " of " +
                                              std::to_string(report_.keys));
      });
      builder.reset();  // its memory is needed for writing
      setFreshDays(db, options_.freshDays);
      messages_.progress("writing");
      interruption_.check();
      try {
        if (db.writeFile(path.c_str()) != 0)
          throw ErrException(ERR_INVALID_STATUS, 0, "nothing to write");
      } catch (const ErrException& error) {
        throw ProgramError(options_.file + ": " + error.getMessage() +
                           (error.getErrCode() == ERR_CANT_WRITE_FILE
                                ? "; is there room on the disk?"
                                : ""));
      }
    }
    file.flush();
    report_.path = options_.file;
    report_.bytes = std::filesystem::file_size(path);

    messages_.progress("checking");
    interruption_.check();
    CategoryNames names;
    URLDB written;
    openForCheck(&written, &names, path);
    requireSound(written, path, ": was written, but is not sound");
  }

  const BuildOptions& options_;
  Messages& messages_;
  Interruption interruption_;
  BuildReport report_;
  uint64_t otherRefusals_ = 0;  // lines of the hierarchy file
};

}  // namespace

int runBuild(const BuildOptions& options, Output& out, Output& err) {
  Messages messages(err);
  Build build(options, messages);
  try {
    build.run();
  } catch (...) {
    messages.flush();  // what was refused before may explain the end
    throw;
  }
  const int status = build.anyRefused() ? 1 : 0;
  try {
    out.write(reportText(build.report()));
    out.flush();
    messages.flush();
  } catch (const ProgramError& error) {
    // The file has been replaced: a report that cannot be printed changes
    // nothing about that, and the status must tell it.
    messages.line(std::string("urldb: the report: ") + error.what());
    messages.flush();
  } catch (const ReaderGone&) {
    return status;
  }
  return status;
}

void addBuildCommand(CLI::App& app, int* status) {
  const auto options = std::make_shared<BuildOptions>();
  CLI::App* const command =
      app.add_subcommand("build", "Build a database from category lists");
  command->add_option("-o,--output", options->file, "The database to write")
      ->required()
      ->type_name("FILE");
  command
      ->add_option("--base", options->base,
                   "Start from this database; may be FILE itself")
      ->type_name("OLD");
  command
      ->add_option("--hierarchy", options->hierarchy,
                   "Lines LEVEL1<TAB>LEVEL2: what each category belongs to")
      ->type_name("FILE");
  addNumberOption(command, "--fresh-days", &options->freshDays, 0, 36500,
                  "How long the database counts as fresh, 0 to 36500; 31\n"
                  "unless given");
  addTextArguments(command, "SOURCE", &options->sources, "What to read")
      ->required();
  command->footer(
      "SOURCE is a folder with one folder for each category that holds\n"
      "'domains', 'urls' or both; or CATEGORY=FILE, LEVEL1/LEVEL2=FILE, a\n"
      "list of domains, URLs or hosts lines; or a file of\n"
      "ENTRY<TAB>CATEGORY[,CATEGORY...] lines or a dump. A path that holds\n"
      "'=' is written ./PATH.\n"
      "\n"
      "The report goes to standard output, what was refused to standard\n"
      "error. Exit status: 0 FILE was replaced, 1 the same but something was\n"
      "refused, 2 FILE is as it was, also when no entry could be used.\n"
      "\n"
      "Examples:\n"
      "  urldb build -o my.db lists/\n"
      "  urldb build -o my.db news=sites.txt sport/ball=ball.txt\n"
      "  urldb build -o my.db --base my.db ads=/etc/hosts.blocked\n"
      "  urldb dump -d my.db > my.txt && urldb build -o copy.db my.txt\n");
  command->callback([options, status] {
    Output out(STDOUT_FILENO);
    Output err(STDERR_FILENO);
    *status = runBuild(*options, out, err);
  });
}

}  // namespace urldb
