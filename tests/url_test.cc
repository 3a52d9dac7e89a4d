#include "url/url.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "common/error.h"
#include "tests/parsed_url.h"
#include "tests/thrown_by.h"

namespace urldb {
namespace {

// ---- Components

TEST(URL, FreshObjectIsEmpty) {
  const URL url;
  EXPECT_EQ(Parts(), partsOf(url));
  EXPECT_EQ(nullptr, url.stOriginal);
}

TEST(URL, SplitsEveryComponent) {
  const Parts expected = {
      .scheme = "http",
      .host = "www.example.org",
      .domain = ".example.org",
      .path = "a/c",
      .file = "d.html",
      .extension = ".html",
      .fragment = "top",
      .query = "x=1",
      .reverse = "gro.elpmaxe.www",
      .normal = "http://www.example.org/a/c/d.html?x=1#top"};
  EXPECT_EQ(
      expected,
      partsOf(*parsed("http://www.example.org/a/./b/../c/d.html?x=1#top")));
}

TEST(URL, HostAloneHasNeitherSchemeNorPath) {
  const Parts expected = {.host = "www.example.org",
                          .domain = ".example.org",
                          .reverse = "gro.elpmaxe.www",
                          .normal = "www.example.org/"};
  EXPECT_EQ(expected, partsOf(*parsed("www.example.org")));
}

TEST(URL, NormalFormDropsThePassword) {
  const Parts expected = {.scheme = "http",
                          .user = "user",
                          .password = "pw",
                          .host = "host.example",
                          .domain = ".example",
                          .port = 8080,
                          .reverse = "elpmaxe.tsoh",
                          .normal = "http://user@host.example:8080/"};
  EXPECT_EQ(expected, partsOf(*parsed("http://user:pw@host.example:8080/")));
}

TEST(URL, ConstructorParses) {
  const URL url("http://Www.Example/x", 0);
  EXPECT_STREQ("Www.Example", url.stHost);
  EXPECT_THROW(URL("http://intranet/", 0), ErrException);
}

TEST(URL, NullIsRefused) {
  URL url;
  EXPECT_EQ("22/8 Invalid Argument: url==NULL",
            thrownBy([&] { url.parse(nullptr, 0); }));
}

TEST(URL, TakesSchemeAndUserFromTheFirstSeparators) {
  constexpr struct {
    const char *url, *scheme, *user, *password, *host;
  } kCases[] = {
      {"ftp://h.example", "ftp", nullptr, nullptr, "h.example"},
      {"://h.example", "", nullptr, nullptr, "h.example"},
      {"h.example/?u=http://a.b/", "h.example/?u=http", nullptr, nullptr,
       "a.b"},
      {"a://b.c://d.e", "a", nullptr, nullptr, "b.c"},
      {"h.example/@x", nullptr, nullptr, nullptr, "h.example"},
      {"http://u@h.example/", "http", "u", nullptr, "h.example"},
      {"http://@h.example/", "http", "", nullptr, "h.example"},
      {"http://:@h.example/", "http", "", "", "h.example"},
      {"http://u:@h.example/", "http", "u", "", "h.example"},
      {"http://u:p:q@h.example/", "http", "u", "p:q", "h.example"},
      {"http://u@v@h.example/", "http", "u", nullptr, "v@h.example"},
      {"u:p@h.example", nullptr, "u", "p", "h.example"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.url);
    const auto url = parsed(c.url);
    EXPECT_STREQ(c.scheme, url->stProtcol);
    EXPECT_STREQ(c.user, url->stUser);
    EXPECT_STREQ(c.password, url->stPasswd);
    EXPECT_STREQ(c.host, url->stHost);
  }
}

TEST(URL, ReadsThePort) {
  constexpr struct {
    const char* url;
    int port;
    const char* normal;
  } kCases[] = {
      {"http://host.example:/", 0, "http://host.example/"},
      {"http://host.example:0/", 0, "http://host.example/"},
      {"http://host.example:80/", 80, "http://host.example:80/"},
      {"http://host.example:0008/", 8, "http://host.example:8/"},
      {"http://host.example:65536", 65536, "http://host.example:65536/"},
      {"h.example:2147483646", 2147483646, "h.example:2147483646/"},
      {"h.example:2147483647", 2147483647, "h.example:2147483647/"},
      {"h.example:2147483648", 2147483647, "h.example:2147483647/"},
      {"h.example:2147483650", 2147483647, "h.example:2147483647/"},
      {"h.example:4294967296", 2147483647, "h.example:2147483647/"},
      {"h.example:99999999999999999999999", 2147483647,
       "h.example:2147483647/"},
      {"1:2147483647", 2147483647, "0.0.0.1:2147483647/"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.url);
    const auto url = parsed(c.url);
    EXPECT_EQ(c.port, url->nPort);
    EXPECT_STREQ(c.normal, url->stNormal);
  }
}

TEST(URL, PortWithOtherThanDigitsIsRefused) {
  EXPECT_EQ("25/8 Invalid Data: failed Port(80x)",
            errorOf("http://host.example:80x/"));
  EXPECT_EQ("25/8 Invalid Data: failed Port(-1)", errorOf("h.example:-1"));
  EXPECT_EQ("25/8 Invalid Data: failed Port( 80)", errorOf("h.example: 80"));
  EXPECT_EQ("25/8 Invalid Data: failed Port(80:81)",
            errorOf("h.example:80:81"));
  EXPECT_EQ("25/8 Invalid Data: failed Port(80?x=1)",
            errorOf("http://h.example:80?x=1"));
  EXPECT_EQ("25/8 Invalid Data: failed Port(\xB2)",
            errorOf("http://h.example:\xB2/"));
}

TEST(URL, TextOfTheUserIsNoFormat) {
  EXPECT_EQ("25/8 Invalid Data: failed Port(%n%s%999999d)",
            errorOf("http://h.example:%n%s%999999d/"));
  EXPECT_EQ("25/8 Invalid Data: failed domain(%s%n)", errorOf("%s%n"));
  const auto url = parsed("http://%s%n.%d/%s/%n.%x?%s#%n");
  EXPECT_STREQ("http://%s%n.%d/%s/%n.%x?%s#%n", url->stNormal);
}

// ---- Hosts

TEST(URL, PrivateAddressesAreMarked) {
  constexpr struct {
    const char* host;
    bool isPrivate;
  } kCases[] = {
      {"192.168.10.1", true},     {"172.32.0.1", false},
      {"10.0.0.0", true},         {"10.255.255.255", true},
      {"9.255.255.255", false},   {"11.0.0.0", false},
      {"172.15.255.255", false},  {"172.16.0.0", true},
      {"172.31.255.255", true},   {"192.167.255.255", false},
      {"192.168.0.0", true},      {"192.168.255.255", true},
      {"192.169.0.0", false},     {"169.253.255.255", false},
      {"169.254.0.0", true},      {"169.254.255.255", true},
      {"169.255.0.0", false},     {"127.0.0.1", false},
      {"224.0.0.1", false},       {"0.0.0.0", false},
      {"255.255.255.254", false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.host);
    const auto url = parsed("http://" + std::string(c.host) + "/");
    EXPECT_TRUE(url->isIPAddress);
    EXPECT_EQ(c.isPrivate, url->isPrivateAddress);
    EXPECT_STREQ(c.host, url->stHost);
    EXPECT_STREQ(c.host, url->stReverseHost);
    EXPECT_EQ(nullptr, url->stDomain);
  }
}

TEST(URL, NumberWithoutDotsBecomesADottedQuad) {
  constexpr struct {
    const char *host, *quad;
    bool isPrivate;
  } kCases[] = {
      {"3232235521", "192.168.0.1", true},
      {"0", "0.0.0.0", false},
      {"1", "0.0.0.1", false},
      {"255", "0.0.0.255", false},
      {"65535", "0.0.255.255", false},
      {"16777215", "0.255.255.255", false},
      {"167772160", "10.0.0.0", true},
      {"4294967294", "255.255.255.254", false},
      {"010", "0.0.0.8", false},  // octal
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.host);
    const auto url = parsed("http://" + std::string(c.host) + "/x");
    EXPECT_TRUE(url->isIPAddress);
    EXPECT_EQ(c.isPrivate, url->isPrivateAddress);
    EXPECT_STREQ(c.quad, url->stHost);
    EXPECT_STREQ(c.quad, url->stReverseHost);
    EXPECT_EQ("http://" + std::string(c.quad) + "/x", url->stNormal);
  }
}

TEST(URL, ShortenedAddressWithDotsStaysAsWritten) {
  const auto url = parsed("http://10.1/");
  EXPECT_STREQ("10.1", url->stHost);
  EXPECT_STREQ("10.1", url->stReverseHost);
  EXPECT_TRUE(url->isIPAddress);
  EXPECT_TRUE(url->isPrivateAddress);
  EXPECT_FALSE(parsed("http://9.655361/")->isPrivateAddress);
}

TEST(URL, NumericHostThatIsNoAddressIsRefused) {
  for (const char* host : {"255.255.255.255", "4294967295", "", ".", "..",
                           "256.1.1.1", "1.2.3.4.5", "1.2.3.4.", "1..2",
                           "4294967296", "08", "99999999999999999999"}) {
    const std::string text = host;
    EXPECT_EQ("25/8 Invalid Data: failed Host(" + text + ")",
              errorOf("http://" + text + "/", 1));
  }
  EXPECT_EQ("25/8 Invalid Data: failed Host()", errorOf(""));
  EXPECT_EQ("25/8 Invalid Data: failed Host()", errorOf("/"));
  EXPECT_EQ("25/8 Invalid Data: failed Host()", errorOf("http://u:p@:80/"));
}

TEST(URL, HostWithoutADotNeedsTheFlag) {
  EXPECT_EQ("25/8 Invalid Data: failed domain(intranet)",
            errorOf("http://intranet/"));
  EXPECT_EQ("25/8 Invalid Data: failed domain(intranet)",
            errorOf("http://intranet/", 0x10000));
  for (const int flags : {1, 0x10001}) {
    const Parts expected = {.scheme = "http",
                            .host = "intranet",
                            .reverse = "tenartni",
                            .normal = "http://intranet/"};
    EXPECT_EQ(expected, partsOf(*parsed("http://intranet/", flags)));
  }
}

TEST(URL, LocalhostIsNeverReversed) {
  for (const char* host : {"LocalHost", "localhost", "LOCALHOST"}) {
    for (const int flags : {0, 1}) {
      const Parts expected = {.scheme = "http",
                              .host = host,
                              .reverse = host,
                              .normal = "http://" + std::string(host) + "/"};
      EXPECT_EQ(expected,
                partsOf(*parsed("http://" + std::string(host) + "/", flags)));
    }
  }
  for (const char* host : {"localhos", "localhosts",
                           "l\xCF"
                           "calhost"})
    EXPECT_EQ("25/8 Invalid Data: failed domain(" + std::string(host) + ")",
              errorOf(host));
}

TEST(URL, OneTrailingDotOfADomainGoes) {
  constexpr struct {
    const char* url;
    int flags;
    const char *host, *domain, *reverse;
  } kCases[] = {
      {"www.example.org.", 0, "www.example.org", ".example.org",
       "gro.elpmaxe.www"},
      {"a.b..", 0, "a.b.", ".b.", ".b.a"},
      {"a..", 0, "a.", ".", ".a"},
      {"example.", 1, "example", "", "elpmaxe"},
      {".a", 0, ".a", ".a", "a."},
      {"localhost.", 1, "localhost", "", "tsohlacol"},
      {"h.example?x=1", 0, "h.example?x=1", ".example?x=1", "1=x?elpmaxe.h"},
      {"h.example#top", 0, "h.example#top", ".example#top", "pot#elpmaxe.h"},
      {"\x83\x5C.example", 0, "\x83\x5C.example", ".example",
       "elpmaxe.\x5C\x83"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.url);
    const auto url = parsed(c.url, c.flags);
    EXPECT_STREQ(c.host, url->stHost);
    EXPECT_STREQ(c.domain, url->stDomain);
    EXPECT_STREQ(c.reverse, url->stReverseHost);
    EXPECT_FALSE(url->isIPAddress);
  }
  EXPECT_EQ("25/8 Invalid Data: failed domain(example.)",
            errorOf("http://example./"));
}

// ---- Paths

struct PathCase {
  const char *remainder, *path, *file, *normal;
};

void expectPath(const PathCase& c) {
  SCOPED_TRACE(c.remainder);
  const auto url = parsed("http://h.example/" + std::string(c.remainder));
  EXPECT_STREQ(c.path, url->stPath);
  EXPECT_STREQ(c.file, url->stFileName);
  EXPECT_EQ("http://h.example/" + std::string(c.normal), url->stNormal);
}

TEST(URL, ClimbingAboveTheRootIsKept) {
  expectPath({"../../x", "../..", "x", "../../x"});
  expectPath({"../a/../../x", "../..", "x", "../../x"});
  expectPath({"../a/x", "../a", "x", "../a/x"});
  expectPath({"../../a/b/", "../../a/b", nullptr, "../../a/b/"});
  expectPath({"a/../../b/", "../b", nullptr, "../b/"});
}

TEST(URL, DotDotAtTheEndTakesAFolder) {
  expectPath({"a/b/..", "a", nullptr, "a/"});
  expectPath({"a/..", nullptr, nullptr, ""});
  expectPath({"..", nullptr, "..", ".."});
  expectPath({"../..", "..", "..", "../.."});
  expectPath({"a/../..", nullptr, "..", ".."});
}

TEST(URL, DotSegmentsAreRemoved) {
  for (const PathCase& c : {
           PathCase{"", nullptr, nullptr, ""},
           {".", nullptr, nullptr, ""},
           {"./", nullptr, nullptr, ""},
           {"x", nullptr, "x", "x"},
           {"a/", "a", nullptr, "a/"},
           {"a/.", "a", nullptr, "a/"},
           {"a/./././x", "a", "x", "a/x"},
           {"a/b/../x", "a", "x", "a/x"},
           {"a/b/../../x", nullptr, "x", "x"},
           {"a/...", "a", "...", "a/..."},
           {".../x", "...", "x", ".../x"},
           {"a/.b/..c/x", "a/.b/..c", "x", "a/.b/..c/x"},
           {"%2e%2e/x", "%2e%2e", "x", "%2e%2e/x"},
           {"a/..?q", nullptr, nullptr, "?q"},
       })
    expectPath(c);
}

TEST(URL, EmptyFoldersAreKeptButOneAloneIsNoPath) {
  for (const PathCase& c : {
           PathCase{"a//b/", "a//b", nullptr, "a//b/"},
           {"/a/b", "/a", "b", "/a/b"},  // two slashes behind the host
           {"/b", nullptr, "b", "b"},
           {"/", nullptr, nullptr, ""},
           {"//", "/", nullptr, "//"},
           {"//b", "/", "b", "//b"},
           {"a//", "a/", nullptr, "a//"},
           {"a//../b", "a", "b", "a/b"},
           {"..//b", "../", "b", "..//b"},
           {"/..", nullptr, nullptr, ""},
           {"/../x", nullptr, "x", "x"},
       })
    expectPath(c);
}

TEST(URL, FileNameHasAnExtension) {
  constexpr struct {
    const char *file, *extension;
  } kCases[] = {
      {"a.htm", ".htm"},
      {"a", nullptr},
      {"a.tar.gz", ".gz"},
      {"a.", "."},
      {".htaccess", ".htaccess"},
      {"..", "."},
      {"a.b;c.d", ".b"},
      {"a;b.c", nullptr},
      {";a.b", nullptr},
      {"a.b;", ".b"},
      {".%41", nullptr},
      {".htm", ".htm"},
      {".%4142", ".%4142"},
      {".a%4", ".a%4"},
      {".%", ".%"},
      {".%4g", ".%4g"},
      {".%aF", nullptr},
      {".%41g", nullptr},
      {".%411%41", nullptr},  // the second escape counts
      {".%%41", nullptr},
      {".%4%", ".%4%"},
      {".%4;1", ".%4"},  // parameters end the run
      {".%41;1", nullptr},
      {"%41.htm", ".htm"},  // only behind the last dot
      {".%41.htm", ".htm"},
      {"a.%41b;x.y", ".%41b"},  // three digits
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.file);
    const auto url = parsed("http://h.example/" + std::string(c.file) + "?.q");
    EXPECT_STREQ(c.extension, url->stExtension);
  }
}

TEST(URL, SplitsQueryAndFragment) {
  constexpr struct {
    const char *remainder, *file, *query, *fragment, *normal;
  } kCases[] = {
      {"x?q", "x", "q", nullptr, "x?q"},
      {"x#f", "x", nullptr, "f", "x#f"},
      {"x?q#f", "x", "q", "f", "x?q#f"},
      {"x?q#f#g?h", "x", "q", "f#g?h", "x?q#f#g?h"},
      {"x#f?q", "x", nullptr, "f?q", "x#f?q"},
      {"x#f#g", "x", nullptr, "f#g", "x#f#g"},
      {"x?q?r", "x", "q?r", nullptr, "x?q?r"},
      {"?a/../b", nullptr, "a/../b", nullptr, "?a/../b"},
      {"x?", "x", nullptr, nullptr, "x"},  // empty right behind the first
      {"x#", "x", nullptr, nullptr, "x"},
      {"?", nullptr, nullptr, nullptr, ""},
      {"x?#f", "x", "", "f", "x?#f"},  // there, but empty
      {"x?#", "x", "", "", "x?#"},
      {"x?q#", "x", "q", "", "x?q#"},
      {"x##", "x", nullptr, "#", "x##"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.remainder);
    const auto url = parsed("http://h.example/" + std::string(c.remainder));
    EXPECT_STREQ(c.file, url->stFileName);
    EXPECT_STREQ(c.query, url->stQuery);
    EXPECT_STREQ(c.fragment, url->stFragment);
    EXPECT_EQ("http://h.example/" + std::string(c.normal), url->stNormal);
  }
}

TEST(URL, QueryBehindTheHostBelongsToTheHost) {
  const auto url = parsed("http://h.example?x=1");
  EXPECT_STREQ("h.example?x=1", url->stHost);
  EXPECT_EQ(nullptr, url->stQuery);
}

// ---- State

TEST(URL, FailedParseKeepsTheFormerComponents) {
  std::string deep = "http://h.example/";
  for (int i = 0; i < 4096; ++i) deep += "a/";
  URL url;
  parse(url, "http://u:p@www.example.org:81/a/b.c?d#e");
  const Parts before = partsOf(url);
  for (const std::string& text :
       {std::string("ftp://x@y.example:1z/"), std::string("s://1.2.3.4.5/z"),
        std::string("s://255.255.255.255/z"), std::string("s://plain/z"),
        std::string("s://plain./z"), std::string(""), deep}) {
    EXPECT_NE("", errorOf(url, text));
    EXPECT_EQ(before, partsOf(url));
    EXPECT_STREQ("http://u:p@www.example.org:81/a/b.c?d#e", url.stOriginal);
  }
  EXPECT_THROW(url.parse(nullptr, 0), ErrException);
  EXPECT_EQ(before, partsOf(url));
}

TEST(URL, LaterParseOverwritesEveryComponent) {
  URL url;
  parse(url, "http://u:p@10.0.0.1:81/a/b.c?d#e");
  parse(url, "www.example.org");
  EXPECT_EQ(partsOf(*parsed("www.example.org")), partsOf(url));
}

TEST(URL, TextsLiveUntilThePoolIsReset) {
  URL url;
  parse(url, "http://www.example.org/a/b.c");
  const char* host = url.stHost;
  const char* path = url.stPath;
  const std::size_t total = url.total();
  for (int i = 0; i < 100; ++i) parse(url, "http://other.example/x/y/z");
  EXPECT_STREQ("www.example.org", host);
  EXPECT_STREQ("a", path);
  EXPECT_GT(url.total(), total);
  url.removeAll();
  EXPECT_EQ(0u, url.total());
  parse(url, "http://www.example.org/a/b.c");
  EXPECT_STREQ("http://www.example.org/a/b.c", url.stNormal);
  EXPECT_EQ(total, url.total());
}

// ---- Forms and the dump

TEST(URL, KnowsTheShapeOfAForm) {
  constexpr struct {
    const char* text;
    bool isForm;
  } kCases[] = {
      {"a=b", true},     {"a=", true},          {"a=b&c=d", true},
      {"", false},       {"a", false},          {"a=b&c", false},
      {"a=b&", false},   {"a=b=c", false},      {"=", true},
      {"=&=", true},     {"&", false},          {"&a=b", false},
      {"a=&&b=", false}, {"a=b&c=d&e=f", true}, {"a=b&c=d=e", false},
  };
  const URL url;
  for (const auto& c : kCases)
    EXPECT_EQ(c.isForm, url.isQueryValue(c.text)) << c.text;
}

TEST(URL, DumpNamesEveryComponent) {
  std::ostringstream out;
  out << std::hex << std::showbase
      << *parsed("http://u:p@www.example.org:8080/a/b.c?d#e");
  EXPECT_EQ(
      "<http://u:p@www.example.org:8080/a/b.c?d#e>\n"
      "    stProtcol: http\n"
      "       stUser: u\n"
      "     stPasswd: p\n"
      "       stHost: www.example.org\n"
      "     stDomain: .example.org\n"
      "        nPort: 8080\n"
      "stReverseHost: gro.elpmaxe.www\n"
      "       stPath: a\n"
      "   stFileName: b.c\n"
      "  stExtension: .c\n"
      "      stQuery: d\n"
      "   stFragment: e\n",
      out.str());
}

TEST(URL, DumpOfAnEmptyObjectShowsNulls) {
  const URL url;
  std::ostringstream out;
  out << url;
  EXPECT_EQ(
      "<(null)>\n"
      "    stProtcol: (null)\n"
      "       stUser: (null)\n"
      "     stPasswd: (null)\n"
      "       stHost: (null)\n"
      "     stDomain: (null)\n"
      "        nPort: 0\n"
      "stReverseHost: (null)\n"
      "       stPath: (null)\n"
      "   stFileName: (null)\n"
      "  stExtension: (null)\n"
      "      stQuery: (null)\n"
      "   stFragment: (null)\n",
      out.str());
}

}  // namespace
}  // namespace urldb
