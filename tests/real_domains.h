#ifndef URLDB_TESTS_REAL_DOMAINS_H_
#define URLDB_TESTS_REAL_DOMAINS_H_

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <vector>

namespace urldb {

// The 50,000 domains of tests/data, see its licence notice.
inline std::vector<std::string> realDomains() {
  std::vector<std::string> domains;
  gzFile file = gzopen(URLDB_TEST_DATA "/domains50k.txt.gz", "rb");
  EXPECT_NE(file, nullptr) << "cannot open the test data";
  if (file == nullptr) return domains;
  char line[1024];
  while (gzgets(file, line, sizeof line) != nullptr) {
    std::string domain = line;
    while (!domain.empty() &&
           (domain.back() == '\n' || domain.back() == '\r')) {
      domain.pop_back();
    }
    if (!domain.empty()) domains.push_back(domain);
  }
  gzclose(file);
  return domains;
}

}  // namespace urldb

#endif  // URLDB_TESTS_REAL_DOMAINS_H_
