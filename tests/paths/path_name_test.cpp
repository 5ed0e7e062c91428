#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <tuple>
#include <utility>

#include "kybase/paths/path_list.h"
#include "kybase/paths/path_name.h"

namespace {

using P = KyPathName;
std::string S(const KyString& s) { return s.getValue(); }
std::string Dos(const char* text) {
  P p;
  p.setDosValue(text);
  return S(p.getDosValue());
}
// device|directory|file|extension
std::string Parts(const P& p) {
  P q(p);
  return S(p.getDevice()) + "|" + S(q.getUnixDirectory(true)) + "|" + S(p.getFileName()) + "|" + S(p.getExtension());
}

// The directory steps read literally, one edit at a time, as the reference.
std::string LiteralNormalize(std::string d) {
  if (d.empty() || d.back() != '/') d += '/';
  d = S(KyString(d.c_str()).substitute("/./", "/"));
  for (std::size_t i; (i = d.find("//")) != std::string::npos;) d.erase(i, 1);
  if (d.compare(0, 2, "./") == 0) d.erase(0, 2);
  long s = 0;
  while (d.compare(s, 3, "../") == 0) s += 3;
  if (s > 0) s -= 1;
  for (long i = static_cast<long>(d.find("/../", s)); i > 0 && i != -1; i = static_cast<long>(d.find("/../", s))) {
    if (i == s) {
      s += 3;
      continue;
    }
    const long p = i == 0 ? -1 : static_cast<long>(d.rfind('/', i - 1));
    d.erase(p + 1, i + 4 - (p + 1));
  }
  return d;
}

TEST(PathNameTest, UnixAndDosParsersAndPrinters) {
  struct Case { const char* text; bool dos; const char* parts; const char* unix; } cases[] = {
      {".", false, "|./||", "./"},           {"..", false, "|./|..|", ".."},        {"foo/", false, "|foo/||", "foo/"},
      {"/", false, "|/||", "/"},             {"a/b.c.d", false, "|a/|b.c|d", "a/b.c.d"},
      {".profile", false, "|./|.profile|", ".profile"},                {"name.", false, "|./|name.|", "name."},
      {"foo/..", false, "|foo/|..|", "foo/.."},  {"c:/x", false, "|c:/|x|", "c:/x"},
      {"a\\b", false, "|./|a\\b|", "a\\b"},    {"c:", true, "c|./||", "./"},          {"1:x", true, "|./|1:x|", "1:x"},
      {"C:\\Temp\\a.b.txt", true, "C|/Temp/|a.b|txt", "/Temp/a.b.txt"}, {"\\\\srv", true, "|/|srv|", "/srv"},
      {"\\\\srv\\share\\d\\f.c", true, "\\\\srv\\share|/d/|f|c", "/d/f.c"},
      {"\\\\srv\\share", true, "\\\\srv\\share|./||", "./"}, {"c:./foo", true, "c|./|foo|", "foo"}};
  for (const Case& c : cases) {
    P p;
    c.dos ? p.setDosValue(c.text) : p.setUnixValue(c.text);
    EXPECT_EQ(Parts(p), c.parts) << c.text;
    EXPECT_EQ(S(p.getUnixValue()), c.unix) << c.text;
  }
  EXPECT_EQ(S(P("c:/x").getDosValue()), "c:\\x");
  EXPECT_EQ(Dos("c:"), "c:\\");
  EXPECT_EQ(Dos("c:foo\\bar"), "c:\\foo\\bar");
  EXPECT_EQ(Dos("\\\\srv\\share\\d\\f.c"), "\\\\srv\\share\\d\\f.c");
  EXPECT_EQ(Dos(""), ".\\");
  EXPECT_EQ(S(P("").getUnixValue()), "./");
  // Text goes through the Unix form: a DOS text read as one keeps its drive as a name.
  EXPECT_EQ(S(KyString(P("C:\\a.txt"))), "C:\\a.txt");
  EXPECT_TRUE(P("A.TXT") == P("a.txt") && P("/Bin") == P("/bin") && P("a") != P("b"));
}

TEST(PathNameTest, RangesAndSetters) {
  P p;
  p.setUnixValue("xx/a/b.txt", -1, 3);
  EXPECT_EQ(Parts(p), "|a/|b|txt");
  // A "." just past the end hides the earlier ones: the whole range is the name.
  p.setBaseName("ab.c.d", 4, 0);
  EXPECT_EQ(Parts(p), "|a/|ab.c|");
  p.setUnixValue("/x/y/");
  p.setUnixValue(".");
  EXPECT_EQ(Parts(p), "|/x/y/||");
  p.setDevice("cd:");
  EXPECT_EQ(S(p.getDevice()), "c");
  for (int end : {-5, -2, 0, 3, 100, INT_MAX})
    for (int start : {-5, 0, 2, 100, INT_MAX}) {
      P q("keep/me");
      q.setUnixValue("ab/cd.e", end, start);
      q.setDosValue("c:\\x\\y", end, start);
      q.setDosDirName("\\\\s\\t", end, start);
      q.addDosDirectory("a\\b", end, start);
      q.setBaseName("n.e", end, start);
      EXPECT_FALSE(S(q.getDosValue()).empty());
    }
  p.setUnixValue("a/b");
  p.addUnixDirectory("/r/s");
  EXPECT_EQ(S(p.getUnixValue()), "/r/s/b");
  p.setDosDirName("\\\\srv\\share");
  EXPECT_EQ(Parts(p), "|/srv/share/|b|");
  p.setDosDirName("d:\\w");
  EXPECT_EQ(S(p.getDosValue()), "d:\\w\\b");
  EXPECT_EQ(S(p.getDirName(false, P::kDosPathType)), "d:\\w");
  EXPECT_EQ(S(P("/").getDirectory(false, P::kUnixPathType)), "/");
}

TEST(PathNameTest, NormalizeMatchesItsStepsOnRandomTexts) {
  const std::pair<const char*, const char*> cases[] = {
      {"a/b/../c", "a/c/"}, {"a/../b/", "b/"},         {"a/..", ""},      {"../../a/../b/", "../../b/"},
      {"//a///b", "/a/b/"}, {"./a", "a/"},             {"a/././b", "a/b/"}, {"/a/../../b/", "/../b/"},
      {"/../b/", "/../b/"}, {"a/../../../", ""},       {"/../x/../", "/../x/../"}};
  for (const auto& [in, out] : cases) {
    P p;
    p.setUnixDirectory(in);
    EXPECT_EQ(S(p.getUnixDirectory(true)), *out ? out : "./") << in;
    EXPECT_EQ(LiteralNormalize(in), out) << in;
  }
  // 200,000 pairs resolve in linear time (a quadratic pass would outlast the timeout).
  std::string pairs;
  for (int n = 0; n < 200000; ++n) pairs += "x/";
  for (int n = 0; n < 200000; ++n) pairs += "../";
  P deep;
  deep.setUnixDirectory(pairs.c_str());
  EXPECT_EQ(S(deep.getUnixDirectory(true)), "./");
  std::mt19937 random(7);
  const char alphabet[] = {'/', '/', '.', '.', 'a', 'b'};
  for (int n = 0; n < 20000; ++n) {
    std::string text(random() % 14 + 1, 'x');
    for (char& c : text) c = alphabet[random() % sizeof alphabet];
    P p;
    p.setUnixDirectory(text.c_str());
    const std::string want = LiteralNormalize(text);
    ASSERT_EQ(S(p.getUnixDirectory(true)), want.empty() ? "./" : want) << text;
  }
}

TEST(PathNameTest, CacheFollowsTheSystemForm) {
  P p;
  p.setDosValue("c:\\a\\b.txt");
  EXPECT_EQ(S(p.getDosValue()), "c:\\a\\b.txt");
  EXPECT_EQ(S(p.getString(P::kDosPathType)), "c:\\a\\b.txt");  // the DOS builder keeps it stale
  EXPECT_EQ(S(p.getUnixValue()), "/a/b.txt");
  EXPECT_EQ(S(p.getString(P::kDosPathType)), "/a/b.txt");  // Unix until the next change
  EXPECT_STREQ(static_cast<const char*>(p), "/a/b.txt");
  p.setExtension("c");
  EXPECT_EQ(S(p.getString(P::kDosPathType)), "c:\\a\\b.c");
  EXPECT_EQ(S(p.get83DosValue()), "c:\\a\\b.c");
  EXPECT_EQ(S(P("C:\\programs\\longfilename.text").get83DosValue()), "C:\\progr.tex");  // one Unix name
  P dos;
  dos.setDosValue("c:\\programs\\longfilename.text");
  EXPECT_EQ(S(dos.get83DosValue()), "c:\\programs\\longfile.tex");
  dos.setDosValue("c:\\averyverylongstem.extension\\and\\averylongname.x\\f");
  EXPECT_FALSE(S(dos.get83DosValue()).empty());  // the kept offsets end inside the text
}

TEST(PathNameTest, Algebra) {
  struct Case { const char* a; const char* b; const char* merged; const char* relative; } cases[] = {
      {"a/x.y", "b/c.txt", "a/b/c.txt", "x.y"},  // first parts agree on length alone
      {"a/x.y", "/b/", "/b/", "a/x.y"}, {"a/x.y", "b/", "a/b/", "x.y"},
      {"/a/b/c.txt", "/a/d/e/", "/a/d/e/", "../../b/c.txt"}, {"/a/b/c.txt", "/a/b/", "/a/b/", "c.txt"},
      {"a/b.txt", "/a/", "/a/", "a/b.txt"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(S(P(c.a).merge(c.b).getUnixValue()), c.merged) << c.a << " " << c.b;
    EXPECT_EQ(S(P(c.a).computeRelativePath(c.b).getUnixValue()), c.relative) << c.a << " " << c.b;
  }
  // Path, first, all but first, last and all but last subdirectory, levels.
  struct Cut { const char *path, *first, *butFirst, *last, *butLast; int levels; };
  const Cut cuts[] = {{"/a/b/c/f.x", "/a/", "b/c/", "c/", "/a/b/", 3}, {"a/b/", "a/", "b/", "b/", "a/", 2},
                      {"/", "/", "./", "/", "/", 0},                    {"", "./", "./", "./", "./", 0}};
  for (const Cut& c : cuts) {
    EXPECT_EQ(S(P(c.path).computeFirstSubDirectory().getUnixValue()), c.first) << c.path;
    EXPECT_EQ(S(P(c.path).computeAllButFirstSubDirectory().getUnixValue()), c.butFirst) << c.path;
    EXPECT_EQ(S(P(c.path).computeLastSubDirectory().getUnixValue()), c.last) << c.path;
    EXPECT_EQ(S(P(c.path).computeAllButLastSubDirectory().getUnixValue()), c.butLast) << c.path;
    EXPECT_EQ(P(c.path).computeLevelNumber(), c.levels) << c.path;
  }
  P root("/");
  root.forceRelative();
  EXPECT_EQ(S(root.getUnixValue()), "/");
  P rel("a/f.x");
  rel.forceAbsolute();
  rel.forceDirectory();
  EXPECT_EQ(S(rel.getUnixValue()), "/a/f.x/");
  EXPECT_EQ(S(P("/a/b/").getSubDirectory(1, 1)), "a/");
  EXPECT_EQ(S(P("/a/b/").getSubDirectory(-1, 1)), "b/");
  EXPECT_EQ(S(P("/a/b/").getSubDirectory(2, -1)), "b/");
  for (long first : {LONG_MIN, -3L, 0L, 5L, LONG_MAX})
    for (long count : {LONG_MIN, -1L, 1L, LONG_MAX}) EXPECT_LE(P("/a/b/").getSubDirectory(first, count).getLength(), 5u);
  EXPECT_EQ(S(P("/a/b/c/d/f.txt").getTruncatedValue(2)), "/.../c/d/f.txt");
  EXPECT_EQ(S(P("a/b/c/f.txt").getTruncatedValue(1)), ".../c/f.txt");
  EXPECT_EQ(S(P("/a/f.txt").getTruncatedValue(10)), "/a/f.txt");
  EXPECT_TRUE(P("/x/a/b/").isSubDirectory("a/"));
  EXPECT_FALSE(P("/x/a/b/f").isSubDirectory("a/"));
  EXPECT_EQ(S(P("/x/a/b/").computeSameLeading("/x/c/").getUnixValue()), "/x/");
  EXPECT_EQ(S(P("abc/d/").computeSameLeading("xyz/e/").getUnixValue()), "abc/");  // first part by length
  EXPECT_EQ(S(P("/x/a/b/").computeDifferLeading("/x/c/").getUnixValue()), "a/b/");
  EXPECT_EQ(S(P("/q/a/b/f.c").computeSameTrailing("/r/a/b/g.c").getUnixValue()), ".c");
  EXPECT_EQ(S(P("/q/a/b/f.c").computeDifferTrailing("/r/a/b/f.c").getUnixValue()), "/q/a/");
  EXPECT_EQ(S(P("b/c").prepend("/a/").getUnixValue()), "/a/b/c");
  EXPECT_EQ(S((P("a/") + "b.c").getUnixValue()), "a/b.c");
}

TEST(PathNameTest, MatchWithAlternatives) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"A.TXT", "*.txt", true},        {"abc.txt", "a(x|b)c.txt", true}, {"abc.txt", "(abc|xyz).txt", true},
      {"abc.txt", "a(x|y)c.txt", false}, {"a(b.txt", "a(b.txt", true},   {"/a/b/f", "/a/*/f", true},
      {"/a/b/c/f", "/a/*/f", true},    {"d/f", "e/f", false},            {"f.xml", "*.(xml|txt)", true},
      {"f.txt", "*.(xml|txt)", true},  {"f.c", "*.(xml|txt)", false},    {"ab", "(x|y)|a)b", false}};
  for (const auto& [name, pattern, match] : cases) EXPECT_EQ(P(name).match(pattern), match) << name << " " << pattern;
}

std::string Items(const KyPathList& list) {
  std::string out;
  for (KyPathListIterator i(list); !i == 0; i++) out += S(static_cast<const P&>(i).getUnixValue()) + " ";
  return out;
}

TEST(PathListTest, OrdersTextAndSharing) {
  EXPECT_EQ(S(KyPathList(";").getString()), ";/");
  EXPECT_EQ(S(KyPathList(":").getString()), "./:./");
  KyPathList z("z");
  z.insertInList(KyString("x:y"));
  EXPECT_EQ(S(z.getString()), "x/:y/:z/");
  z.setList(KyString("z"));
  z.addInList(KyString("x:y"));
  EXPECT_EQ(S(z.getString()), "z/:x/:y/");
  KyPathList u;
  u.setPrevList(KyString("a:b"));
  u.setList(KyString("b:c"));
  u.setPostList(KyString("A:c"));
  u.unique();
  EXPECT_EQ(S(u.getString()), "a/:b/:c/");
  EXPECT_EQ(Items(u), "a/ b/ c/ ");
  KyPathList post;
  post.setPostList(KyString("p"));
  KyPathListIterator i(post);
  EXPECT_EQ(!i, 0);
  EXPECT_EQ(!i++, 1);
  KyPathList twice(KyString("bin:bin"));
  twice.removeFromList(KyString("bin"));  // not forced to a directory: nothing equal
  EXPECT_EQ(S(twice.getString()), "bin/:bin/");
  twice.removeFromList(KyString("bin/"));
  EXPECT_EQ(S(twice.getString()), "bin/");
  // Shared items: a change behind them shows in both lists; each is freed once.
  KyPathList a(KyString("a1:a2"));
  {
    KyPathList b;
    b.setList(a);
    a.addInList(P("a3"));
    EXPECT_EQ(S(b.getString()), "a1/:a2/:a3/");
    b.removeFromList(P("a2/"));
    EXPECT_EQ(S(a.getString()), "a1/:a3/");
  }
  a.addInList(a);  // a cycle would form: the copy is linked
  EXPECT_EQ(S(a.getString()), "a1/:a3/:a1/:a3/");
  a.setList(a);
  EXPECT_EQ(S(a.getString()), "a1/:a3/:a1/:a3/");
  P found("untouched");
  EXPECT_FALSE(KyPathList().findInPath("f", found, false));
  EXPECT_EQ(S(found.getUnixValue()), "untouched");
}

}  // namespace
