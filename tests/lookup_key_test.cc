#include "tools/lookup_key.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "common/error.h"

namespace urldb {
namespace {

TEST(LookupKey, BuildsTheKey) {
  constexpr struct {
    const char *url, *key;
  } cases[] = {
      {"www.example.org", "gro.elpmaxe.www/"},
      {"https://Example.org", "gro.elpmaxE/"},  // the trie folds case
      {"http://h.example:443/", "elpmaxe.h/"},  // default port of any scheme
      {"https://h.example:80/", "elpmaxe.h/"},
      {"http://h.example:8080/", "elpmaxe.h:8080/"},
      {"http://h.example:/", "elpmaxe.h/"},
      {"http://10.1.2.3/x", "10.1.2.3/x"},  // numeric hosts are not reversed
      {"http://3232235521:81/", "192.168.0.1:81/"},
      {"http://localhost/a", "localhost/a"},
      {"http://intranet/", "tenartni/"},  // taken without a dot
      {"http://user:pw@h.example/", "elpmaxe.h/"},
      {"http://h.example/a/./b/../c/d.html?x=1#top",
       "elpmaxe.h/a/c/d.html?x=1#top"},
      {"http://h.example/a/b/", "elpmaxe.h/a/b/"},
      {"http://h.example/?q", "elpmaxe.h/?q"},
      {"http://h.example/#f", "elpmaxe.h/#f"},
      {"http://h.example/%41", "elpmaxe.h/%41"},  // kept as written
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.url);
    EXPECT_EQ(c.key, lookupKey(c.url));
    EXPECT_EQ(c.key, lookupKey(std::string(c.url)));
    EXPECT_EQ(c.key, lookupKey(URL(c.url, URL::ACCEPT_PLAIN_HOST)));
  }
}

TEST(LookupKey, ARefusedUrlDoesNotSpoilTheNextOne) {
  EXPECT_THROW(lookupKey("http://h.example:80x/"), ErrException);
  EXPECT_THROW(lookupKey(static_cast<const char*>(nullptr)), ErrException);
  EXPECT_EQ("elpmaxe.h/", lookupKey("h.example"));
}

TEST(LookupKey, ANulByteIsRefused) {
  try {
    lookupKey(std::string("h.example/a\0b", 13));
    FAIL() << "not refused";
  } catch (const ErrException& error) {
    EXPECT_EQ(ERR_INVALID_DATA, error.getErrCode());
    EXPECT_EQ(0, error.getSection());
    EXPECT_STREQ("Invalid Data: NUL byte", error.getMessage());
  }
}

TEST(LookupKey, LongUrlsKeepEveryByte) {
  const std::string file(10U << 20, 'x');
  EXPECT_EQ("elpmaxe.h/" + file, lookupKey("http://h.example/" + file));
}

}  // namespace
}  // namespace urldb
