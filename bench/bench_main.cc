#include <benchmark/benchmark.h>
#include <malloc.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/build_memory.h"
#include "bench/ratio_report.h"
#include "tests/temporary_folder.h"

namespace urldb {
namespace {

struct Options {
  std::string lists = URLDB_BENCH_DEFAULT_LISTS;
  std::string urls = URLDB_BENCH_DEFAULT_URLS;
  std::size_t keys = 0;  // all
  int rounds = 5;
  bool libdatrie = false;
};

void reportTargets(const RatioReport& report,
                   const std::optional<BuildMemory>& memory) {
  std::cout << "\n| target | limit | measured | |\n|---|---|---|---|\n";
  const auto target =
      [&report](const std::string& what, const std::string& name,
                const std::string& baseline, double limit, bool atLeast) {
        if (const std::optional<double> ratio = report.ratio(name, baseline))
          RatioReport::printTarget(std::cout, what, *ratio, limit, atLeast);
      };
  for (const std::string order : {"list_order", "sorted_order", "random_order"})
    for (const std::string own : {"double_array", "urldb"}) {
      std::string what = "build, ";
      what.append(order).append(": ").append(own).append(" / flat_hash_map");
      std::string row = "BM_Build/";
      row.append(order).append("/");
      target(what, row + own, row + "flat_hash_map", 6, false);
    }
  for (const std::string own : {"double_array", "urldb"}) {
    target("build, list_order: libdatrie / " + own,
           "BM_Build/list_order/libdatrie", "BM_Build/list_order/" + own, 15,
           true);
  }
  if (memory) {
    RatioReport::printTarget(std::cout, "build: peak memory / file",
                             memory->peak / memory->file, 3, false);
  }
  target("open: double_array / read_and_swap", "BM_Open/trie/double_array",
         "BM_Open/trie/read_and_swap", 3, false);
  target("open: urldb / read_and_swap", "BM_Open/database/urldb",
         "BM_Open/database/read_and_swap", 3, false);
}

void run(const Options& options) {
  // While the process is small.
  const BuildMemory memory = measureBuildMemory(options.lists, options.keys);
  // Large pieces come from the kernel and go back to it all the time, as in a
  // process that has just started; otherwise the second use of a piece would be
  // spared the first touch of its pages.
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);

  RatioReport report;
  const KeySet set = readKeys(options.lists, options.keys);
  const Queries queries = makeQueries(set.keys, readUrls(options.urls));
  std::cout << set.hosts << " hosts of " << set.names.size()
            << " lists, in all " << set.keys.size() << " keys; " << queries.urls
            << " URLs, " << queries.answeredUrls
            << " of them below a host of the lists; queries: "
            << queries.exactHit.size() << " exact_hit, "
            << queries.exactMiss.size() << " exact_miss, "
            << queries.prefixHit.size() << " prefix_hit, "
            << queries.prefixMiss.size() << " prefix_miss; " << options.rounds
            << " rounds\n"
            << std::flush;

  const TemporaryFolder folder;
  const std::string triePath = folder.path("trie");
  const std::string databasePath = folder.path("database");
  Contenders contenders(set);
  addAll(&contenders.trie, set.keys);
  addAll(&contenders.database, set.keys);
  addAll(&contenders.flatHashMap, set.keys);
  addAll(&contenders.marisa, set.keys);
  addAll(&contenders.tinycdb, set.keys);
  contenders.trie.saveAndOpen(triePath);
  contenders.database.saveAndOpen(databasePath);

  registerBuildBenches(set);
  double datrieBuild = 0;
  if (options.libdatrie) {
    // Once, because it takes long; the searches use what comes out.
    const double start = threadNanoseconds();
    contenders.datrie = std::make_unique<DatriePeer>(set);
    addAll(contenders.datrie.get(), set.keys);
    datrieBuild = threadNanoseconds() - start;
  }
  registerSearchBenches(queries, &contenders);
  registerOpenBenches(triePath, databasePath);
  for (int round = 1; round <= options.rounds; ++round) {
    std::cerr << "round " << round << " of " << options.rounds << '\n';
    benchmark::RunSpecifiedBenchmarks(&report);
  }

  if (options.libdatrie)
    report.addOnce("BM_Build/list_order/libdatrie", datrieBuild);
  report.printTable(std::cout, "BM_Build", "flat_hash_map");
  std::cout << std::fixed << std::setprecision(1) << "\nPeak memory of a build "
            << memory.peak / 1e6 << " MB, its file " << memory.file / 1e6
            << " MB\n";
  report.printTable(std::cout, "BM_Search", "double_array");
  report.printTable(std::cout, "BM_Open", "read_and_swap");
  std::cout << std::defaultfloat << std::setprecision(6);
  reportTargets(report, memory);
}

}  // namespace
}  // namespace urldb

int main(int argc, char** argv) try {
  urldb::Options options;
  CLI::App app(
      "Times the engine and others with the same keys, in several rounds, and "
      "prints processor times, ratios, and which targets are met.");
  app.add_option("--lists", options.lists,
                 "folder of category lists, or a file of hosts")
      ->envname("URLDB_BENCH_LISTS");
  app.add_option("--urls", options.urls,
                 "file of URLs, or a folder of category lists")
      ->envname("URLDB_BENCH_URLS");
  app.add_option("--keys", options.keys,
                 "at most about this many keys, evenly from all (0: all)");
  app.add_option("--rounds", options.rounds, "times that each is measured")
      ->check(CLI::Range(1, 1000));
  app.add_flag("--libdatrie", options.libdatrie,
               "libdatrie takes part (its build takes long: it grows with the "
               "square of the keys)");
  app.footer("Options --benchmark_... go to the benchmark library.");
  app.allow_extras();
  CLI11_PARSE(app, argc, argv);

  const std::vector<std::string> rest = app.remaining();
  std::vector<char*> arguments = {argv[0]};
  for (const std::string& text : rest)
    arguments.push_back(const_cast<char*>(text.c_str()));
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  urldb::run(options);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "urldb_bench: %s\n", error.what());
  return 2;
}
