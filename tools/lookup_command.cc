#include "tools/lookup_command.h"

#include <unistd.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/error.h"
#include "tools/category_text.h"
#include "tools/escape.h"
#include "tools/freshness_text.h"
#include "tools/json.h"
#include "tools/lookup_key.h"
#include "tools/number_option.h"
#include "tools/open_database.h"
#include "tools/output.h"
#include "tools/refusal.h"
#include "tools/url_arguments.h"
#include "tools/url_explanation.h"
#include "urldb/database_lookup.h"
#include "urldb/database_view.h"
#include "urldb/key_match.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

struct LookupOptions {
  std::string database;
  int mode = 3;
  bool json = false;
  bool explain = false;
  std::vector<std::string> urls;
};

// What the database says of one URL.
struct Answer {
  std::string key;
  std::unique_ptr<int[]> list;  // null when nothing is known
  // The stored key that answered, when that was asked for.
  std::optional<std::string> storedKey;

  std::span<const int> values() const { return listValues(list.get()); }
};

// A search refuses a key with this byte, so no stored key can have it.
bool canBeStored(const std::string& key) {
  return key.find('\x7F') == std::string::npos;
}

const char* modeText(MatchMode mode) {
  switch (mode) {
    case MatchMode::kExact:
      return "1, the exact key";
    case MatchMode::kAnyByte:
      return "4, the longest prefix at any byte";
    default:
      return "3, the longest prefix that ends at an edge";
  }
}

class Lookup {
 public:
  explicit Lookup(const LookupOptions& options)
      : options_(options), mode_(matchModeOf(options.mode)) {
    openDatabase(&db_, options.database);
    const DatabaseView view = viewOf(db_);
    trie_ = view.trie;
    written_ = view.timeStamp;
    freshDate_ = view.freshDate;
    text_.emplace(*view.names, escapeShownName);
  }

  // All that is printed for one URL. A URL without an answer sets `*refused`.
  std::string line(const std::string& url, bool* refused) {
    try {
      const Answer answer = ask(url);
      return options_.json ? jsonLine(url, answer) : textLines(url, answer);
    } catch (const ErrException& error) {
      *refused = true;
      if (!options_.json) return refusalLine(url, error);
      return "{\"url\":" + jsonString(url) +
             ",\"error\":" + jsonString(refusalText(error)) + jsonEnd();
    }
  }

 private:
  Answer ask(const std::string& url) {
    Answer answer;
    answer.key = lookupKey(url);
    if (!canBeStored(answer.key)) return answer;
    const char* const key = answer.key.c_str();
    KeyMatch match;
    answer.list.reset(
        lookupKey(db_, key, mode_, options_.explain ? &match : nullptr));
    if (match.id != 0)
      answer.storedKey = normalisedKey(*trie_, key).substr(0, match.length);
    return answer;
  }

  std::string textLines(const std::string& url, const Answer& answer) {
    std::string lines = escapeText(url);
    lines += '\t';
    lines += answer.list ? text_->list(answer.values()) : "-";
    lines += '\n';
    if (!options_.explain) return lines;
    lines += explainComponents(url.c_str());
    lines += explanationLine("key", escapeKey(answer.key));
    lines += explanationLine("mode", modeText(mode_));
    lines += explanationLine(
        "stored key", answer.storedKey ? escapeKey(*answer.storedKey) : "-");
    for (const int value : answer.values()) {
      lines += explanationLine(
          "category", text_->value(value) + " (ID " +
                          std::to_string(CategoryText::level1(value)) + "/" +
                          std::to_string(CategoryText::level2(value)) + ")");
    }
    lines += explanationLine("database", escapeText(options_.database));
    lines += explanationLine("written", escapeText(written_));
    lines += explanationLine("fresh", freshnessText(db_));
    return lines;
  }

  std::string jsonLine(const std::string& url, const Answer& answer) {
    std::string line = "{\"url\":" + jsonString(url) +
                       ",\"key\":" + jsonString(escapeKey(answer.key)) +
                       ",\"categories\":[";
    const char* separator = "";
    for (const int value : answer.values()) {
      line += separator + jsonString(text_->value(value));
      separator = ",";
    }
    line += ']';
    if (options_.explain) {
      line += ",\"stored_key\":";
      line +=
          answer.storedKey ? jsonString(escapeKey(*answer.storedKey)) : "null";
    }
    return line + jsonEnd();
  }

  // The fields that stand in every object, and its end.
  std::string jsonEnd() const {
    if (!options_.explain) return "}\n";
    return ",\"mode\":" + std::to_string(static_cast<int>(mode_)) +
           ",\"database\":{\"file\":" + jsonString(options_.database) +
           ",\"written\":" + jsonString(written_) +
           ",\"fresh_until\":" + jsonString(dateText(freshDate_)) +
           ",\"fresh\":" + (db_.isFreshed() ? "true" : "false") + "}}\n";
  }

  const LookupOptions& options_;
  MatchMode mode_;
  URLDB db_;
  const DoubleArray* trie_ = nullptr;
  std::string written_;
  uint32_t freshDate_ = 0;
  std::optional<CategoryText> text_;  // names of db_, once it is open
};

int runLookup(const LookupOptions& options) {
  Lookup lookup(options);
  Output out(STDOUT_FILENO);
  UrlArguments urls(options.urls, [&out] { out.flush(); });
  bool refused = false;
  std::string url;
  while (urls.next(&url)) out.write(lookup.line(url, &refused));
  out.flush();
  return refused ? 1 : 0;
}

}  // namespace

void addLookupCommand(CLI::App& app, int* status) {
  const auto options = std::make_shared<LookupOptions>();
  CLI::App* const command = app.add_subcommand(
      "lookup",
      "Print the categories of each URL, one line out for each line in");
  addDatabaseOption(command, &options->database);
  addNumberOption(command, "--mode", &options->mode, 1, 4,
                  "Which stored key answers, see below; 3 unless given");
  command->add_flag("--json", options->json, "Print a JSON object a line");
  command->add_flag("--explain", options->explain,
                    "Print a block for each URL: how its answer was found");
  addUrlArguments(command, &options->urls);
  command->footer(
      "Output, with a TAB between URL and answer:\n"
      "  URL  category,category    level1/level2 when the levels differ\n"
      "  URL  -                    nothing is known of it\n"
      "  URL  !REASON              it is no URL (exit status 1)\n"
      "\n"
      "Control bytes are printed as %XX; so are % , and / inside a name.\n"
      "\n"
      "With --explain each URL gives a block instead of one line: its answer,\n"
      "and below it indented lines. With --json as well it stays one line.\n"
      "\n"
      "Modes:\n"
      "  1  the exact key\n"
      "  2  the same as 3\n"
      "  3  the longest stored key that begins the asked one and ends at an\n"
      "     edge: h/dir answers for h/dir, h/dir/x and h/dir?q, not h/dirty\n"
      "  4  the longest stored key that begins the asked one, at any byte\n"
      "\n"
      "Examples:\n"
      "  urldb lookup -d my.db http://www.example.com/news/\n"
      "  urldb lookup -d my.db --explain www.example.com\n"
      "  urldb lookup -d my.db --json - < urls.txt\n");
  command->callback([options, status] { *status = runLookup(*options); });
}

}  // namespace urldb
