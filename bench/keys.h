#ifndef URLDB_BENCH_KEYS_H_
#define URLDB_BENCH_KEYS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "bench/text_list.h"

namespace urldb {

// The keys that every contender takes: each once, with the IDs 1, 2, 3, ... in
// the order of the lists. They are in the form in which the trie compares them,
// but in small letters as they come from the lists, so that a contender that
// knows no folding stores and finds the same keys.
struct KeySet {
  TextList keys;
  std::vector<int> categories;     // of the key with ID i + 1
  std::vector<std::string> names;  // of the categories, from number 1 on
  std::size_t hosts = 0;
};

// Reads the hosts of `lists`: a folder with one folder for each category that
// holds `domains`, or a file of hosts, which may be compressed (gzip). A host
// has the keys of a list entry (tools/list_entry.h): "KEY/", "KEY." and "KEY:",
// numeric hosts without "KEY.". A host of several lists belongs to the first
// one; what is no host is passed over. With `mostKeys` above 0 only as many
// hosts are taken, evenly from all, as have about that many keys. Throws
// std::runtime_error when there is nothing to read.
KeySet readKeys(const std::string& lists, std::size_t mostKeys);

enum class Order { kList, kSorted, kRandom };

// The keys in another order, with the IDs that they have; the random one is
// always the same.
TextList arranged(const TextList& keys, Order order);

// The lines of a file, which may be compressed; of a folder, those of the file
// `urls` in each of its folders. Throws std::runtime_error.
std::vector<std::string> readUrls(const std::string& path);

// The key of a URL as the trie compares it, in small letters.
std::string comparedKey(const std::string& key);

}  // namespace urldb

#endif  // URLDB_BENCH_KEYS_H_
