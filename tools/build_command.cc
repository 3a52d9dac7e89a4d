#include "tools/build_command.h"

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
#include "tools/open_database.h"
#include "tools/program_error.h"
#include "tools/progress_line.h"
#include "tools/safe_file.h"
#include "tools/source_tree.h"
#include "urldb/database_check.h"
#include "urldb/database_freshness.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

constexpr std::size_t kFaultsShown = 10;
constexpr std::size_t kMostBytesShown = 512;  // of a refused entry

// What a user is told while a build runs.
class Messages {
 public:
  explicit Messages(Output& output) : output_(output) {}

  void line(const std::string& text) {
    progress_.clear();
    output_.write(escapeText(text) + "\n");
  }

  void refusal(const std::string& path, uint64_t number, std::string_view entry,
               std::string_view reason) {
    std::string text = path + ":" + std::to_string(number) + ": ";
    text.append(reason).append(": \"").append(entry.substr(0, kMostBytesShown));
    line(text + (entry.size() > kMostBytesShown ? "...\"" : "\""));
  }

  void progress(const std::string& text) {
    output_.flush();
    progress_.show(text);
  }

  void flush() {
    progress_.clear();
    output_.flush();
  }

 private:
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
  Build(const BuildOptions& options, Output& messages)
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
    if (options_.base) readBase(*options_.base, builder.get());
    if (options_.hierarchy)
      readHierarchyFile(*options_.hierarchy, builder.get());
    std::vector<std::size_t> bounds;  // entries before each list, and after all
    for (const ListSource& source : sources)
      readSource(source, builder.get(), &bounds);
    bounds.push_back(builder->entries());
    if (builder->entries() == 0) messages_.line("urldb: no entries");

    messages_.progress("sorting");
    interruption_.check();
    const KeyTotals totals = builder->finish();
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
    URLDB base;
    openDatabase(&base, path);
    requireSound(base, path, ": not a sound database");
    builder->startFrom(base);
  }

  void requireSound(const URLDB& db, const std::string& path,
                    const char* otherwise) {
    const auto faults = checkDatabase(db, kFaultsShown);
    if (faults.empty()) return;
    for (const std::string& fault : faults) messages_.line(path + ": " + fault);
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
        messages_.progress("adding keys: " + std::to_string(done) + " of " +
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
    URLDB written;
    openForCheck(&written, path);
    requireSound(written, path, ": was written, but is not sound");
  }

  const BuildOptions& options_;
  Messages messages_;
  Interruption interruption_;
  BuildReport report_;
  uint64_t otherRefusals_ = 0;  // lines of the hierarchy file
};

}  // namespace

int runBuild(const BuildOptions& options, Output& out, Output& messages) {
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
    messages.write(std::string("urldb: the report: ") + error.what() + "\n");
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
                   "Lines of LEVEL1<TAB>LEVEL2: what each category belongs to")
      ->type_name("FILE");
  command
      ->add_option("--fresh-days", options->freshDays,
                   "How long the database counts as fresh; 31 unless given")
      ->check(CLI::Range(0, 36500))
      ->type_name("N");
  command->add_option("SOURCE", options->sources, "What to read")
      ->required()
      ->type_name("");
  command->footer(
      "SOURCE is a folder with one folder for each category that holds\n"
      "'domains', 'urls' or both; or CATEGORY=FILE, LEVEL1/LEVEL2=FILE, a "
      "list\n"
      "of domains, URLs or hosts lines; or a file of\n"
      "ENTRY<TAB>CATEGORY[,CATEGORY...] lines or a dump. A path that holds "
      "'='\n"
      "is written ./PATH.\n"
      "\n"
      "The report goes to standard output, what was refused to standard "
      "error.\n"
      "Exit status: 0 FILE was replaced, 1 the same but something was "
      "refused,\n"
      "2 FILE is as it was.");
  command->callback([options, status] {
    Output out(STDOUT_FILENO);
    Output messages(STDERR_FILENO);
    *status = runBuild(*options, out, messages);
  });
}

}  // namespace urldb
