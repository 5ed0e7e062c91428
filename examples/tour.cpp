// A tour of libkybase on the sample data: each subsystem shows, in plain words, what it
// does with real input. Run as: tour <data directory>.
#include <kybase/kybase.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  for (char c : text) {
    if (std::isalpha(static_cast<unsigned char>(c))) {
      word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    } else if (!word.empty()) {
      words.push_back(word);
      word.clear();
    }
  }
  if (!word.empty()) words.push_back(word);
  return words;
}

void Heading(const char* title) { std::cout << "\n== " << title << " ==\n"; }

void TourMemory(const std::vector<std::string>& words) {
  Heading("Memory manager and pools");
  KyMemoryManager& manager = KyMemoryManager::GetInstance();
  std::vector<void*> cells;
  for (const std::string& word : words) cells.push_back(manager.alloc(static_cast<unsigned int>(word.size() + 1)));
  std::cout << "Took one small cell per word (" << cells.size() << " cells, sizes 1 to 64 bytes rounded to 8).\n";
  for (std::size_t i = 0; i < cells.size(); ++i) manager.release(cells[i], static_cast<unsigned int>(words[i].size() + 1));
  void* again = manager.alloc(static_cast<unsigned int>(words.back().size() + 1));
  std::cout << "Released them all; the next request of the last word's size reuses the last cell released: "
            << (again == cells.back() ? "yes" : "no") << ".\n";
  manager.release(again, static_cast<unsigned int>(words.back().size() + 1));
  std::cout << "Status of the manager (counters move only when KY_TRACEMEMORYMANAGER asks for them):\n";
  manager.status(std::cout);

  char* buffer = KyCharPool::Alloc(10, true);
  char* other = KyCharPool::Alloc(100, false);
  std::cout << "A locked scratch buffer and an unlocked one from the character pool:\n";
  KyCharPool::PrintInformation(std::cout, 1);
  KyCharPool::UnLock(buffer);
  char* reused = KyCharPool::Alloc(20, false);
  std::cout << "After unlocking, a request of 20 characters takes the first free buffer of the chain that fits: the "
            << (reused == other ? "newer 128-byte" : reused == buffer ? "older 64-byte" : "new") << " one.\n";
}

void TourHashTable(const std::vector<std::string>& words) {
  Heading("Hash tables");
  KyStringHashTable table(17);
  std::vector<unsigned long> counts(words.size(), 0);
  unsigned long growths = 0;
  unsigned long lastBuckets = table.numberOfBuckets();
  std::string growthPath = std::to_string(lastBuckets);
  for (std::size_t i = 0; i < words.size(); ++i) {
    void* key = const_cast<char*>(words[i].c_str());
    auto* count = static_cast<unsigned long*>(table.find(key));
    if (count == nullptr) {
      counts[i] = 1;
      table.insert(key, &counts[i]);
    } else {
      ++*count;
    }
    if (table.numberOfBuckets() != lastBuckets) {
      lastBuckets = table.numberOfBuckets();
      growthPath += " -> " + std::to_string(lastBuckets);
      ++growths;
    }
  }
  std::cout << words.size() << " words, " << table.getLength() << " distinct, counted in a string table.\n";
  std::cout << "Its bucket count grew " << growths << " times: " << growthPath << ".\n";
  unsigned long count = 0;
  const char* const* keys = table.convertToStrings(count, true, true);
  std::cout << "First distinct words in byte order:";
  for (unsigned long i = 0; i < count && i < 8; ++i) std::cout << ' ' << keys[i];
  std::cout << "\nMost frequent:";
  std::set<std::pair<unsigned long, std::string>> top;
  for (unsigned long i = 0; i < count; ++i) {
    top.insert({*static_cast<unsigned long*>(table.find(const_cast<char*>(keys[i]))), keys[i]});
    if (top.size() > 5) top.erase(top.begin());
  }
  for (auto it = top.rbegin(); it != top.rend(); ++it) std::cout << ' ' << it->second << " (" << it->first << ")";
  std::cout << "\n";
  delete[] keys;
}

void TourContainers(const std::vector<std::string>& words) {
  Heading("Lists, arrays, symbols and the global context");
  // Intern every word: equal texts become one symbol, compared by pointer.
  KyArray symbols;
  for (const std::string& word : words) symbols.add(KySymbol::Get(word.c_str(), true));
  std::cout << words.size() << " words interned as symbols in an array (capacity " << symbols.getMaxLength()
            << ", a power of two reached by doubling).\n";
  KySymbol* light = KySymbol::Get("light", false);
  unsigned long same = 0;
  for (unsigned long i = 0; i < symbols.getLength(); ++i) same += symbols[i] == light;
  std::cout << "The symbol \"light\" is one object; pointer comparison finds it " << same << " times.\n";
  std::cout << "Asking for an unknown word without creating it gives "
            << (KySymbol::Get("lighthouses-of-the-moon", false) == nullptr ? "nothing" : "a symbol") << ".\n";

  // A list of the long words, walked with a safe iterator while the list changes.
  KyList list;
  for (unsigned long i = 0; i < symbols.getLength(); ++i) {
    auto* symbol = static_cast<KySymbol*>(symbols[i]);
    if (std::strlen(symbol->name()) >= 9 && !list.find(symbol)) list.append(symbol);
  }
  std::cout << "Distinct words of nine letters or more, in order of appearance (" << list.getLength() << "):";
  KySafeListIterator walk(list);
  while (walk.hasMoreElements()) {
    auto* symbol = static_cast<KySymbol*>(walk.getNextElement());
    std::cout << ' ' << symbol->name();
    // Removing the word the iterator would visit next is safe: the list moves it on.
    if (auto* next = static_cast<KySymbol*>(list.getValue(1)); next != nullptr && symbol == list.getValue(0)) {
      list.remove(next);
      std::cout << " (removed \"" << next->name() << "\" under the iterator)";
    }
  }
  std::cout << "\n";

  static int owner;
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  context.addValue(light, const_cast<char*>("word"), &owner);
  void* value = nullptr;
  context.getValue(value, const_cast<char*>("word"), &owner);
  std::cout << "The global context keeps client values by owner and key: "
            << (value == light ? "found the stored symbol again" : "lost it") << "; a second add of that key fails with error "
            << (context.addValue(light, const_cast<char*>("word"), &owner) ? 0 : KyGlobalContext::GetError()) << ".\n";
  context.addExitCallback([] { std::cout << "(exit callback: the global context is shutting down)\n"; });
}

void TourNumbers(const std::string& data) {
  Heading("Number text and decimal values");
  std::ifstream in(data + "/ledger.txt");
  std::string line;
  KyNumeric exact;
  double binary = 0;
  int lines = 0;
  std::set<std::string> shown;
  std::cout << "Amounts of " << data << "/ledger.txt (each distinct one shown once), read whatever LC_NUMERIC says:\n";
  while (std::getline(in, line)) {
    char* end = nullptr;
    double value = 0;
    if (!KyStringToDouble(line.c_str(), end, value) || end == line.c_str()) continue;
    const std::string amount(line.c_str(), static_cast<std::size_t>(end - line.c_str()));
    KyNumeric decimal;
    if (!decimal.set(amount.c_str())) continue;
    exact = exact + decimal;
    binary += value;
    char asDouble[32];
    KyDoubleToString(asDouble, value, nullptr);
    char asDecimal[32];
    decimal.get(asDecimal, sizeof asDecimal);
    ++lines;
    if (shown.insert(amount).second)
      std::cout << "  \"" << amount << "\" reads as the double " << asDouble << " and the decimal " << asDecimal
                << "\n";
  }
  char total[64];
  exact.get(total, sizeof total);
  char approximate[32];
  KyDoubleToString(approximate, binary, "%.17g");
  std::cout << lines << " amounts. Summed as 48-digit decimals (KyNumeric) they make " << total
            << "; summed as doubles, written with 17 digits, " << approximate << ".\n";

  const char* commaLocales[] = {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE.utf8"};
  const char* comma = nullptr;
  for (const char* name : commaLocales)
    if (std::setlocale(LC_NUMERIC, name) != nullptr) {
      comma = name;
      break;
    }
  if (comma == nullptr) {
    std::cout << "No decimal-comma locale is installed here (the tests build one with localedef); under one,\n"
              << "printf would write 2,5 while KyDoubleToString still writes 2.5.\n";
    return;
  }
  char printed[32];
  std::snprintf(printed, sizeof printed, "%g", 2.5);
  char written[32];
  KyDoubleToString(written, 2.5, nullptr);
  char* end = nullptr;
  double read = 0;
  KyStringToDouble("2.5", end, read);
  const double runtime = std::strtod("2.5", nullptr);
  std::setlocale(LC_NUMERIC, "C");
  std::cout << "Under " << comma << " printf writes " << printed << " but KyDoubleToString writes " << written
            << "; strtod reads \"2.5\" as " << runtime << ", KyStringToDouble as " << read << ".\n";
}

void TourStrings(const std::string& text) {
  Heading("Strings");
  KyString story(text.c_str());
  KyString copy(story);
  std::cout << "The sample as one KyString: " << story.getLength() << " characters. A copy shares its body ("
            << story.getInternalString()->getRefCount() << " handles on one text), so copying costs no bytes.\n";

  int count = 0;
  for (int at = story.getIndexOf(" light"); at != -1; at = story.getIndexOf(" light", at + 1)) ++count;
  const int lastSea = story.getLastIndexOf("sea");
  std::cout << "\" light\" occurs " << count << " times; the last \"sea\" starts at character " << lastSea
            << ": \"" << story.getSubString(lastSea - 10, lastSea + 13) << "\".\n";

  std::cout << "Lines that match the wildcard pattern \"*the l?ns*\":\n";
  for (int start = 0; start < static_cast<int>(story.getLength());) {
    int end = story.getIndexOf("\n", start);
    if (end == -1) end = static_cast<int>(story.getLength());
    if (story.matches("*the l?ns*", start, end)) std::cout << "  " << story.getSubString(start, end) << "\n";
    start = end + 1;
  }

  copy.substitute("Maren", "the keeper").substitute("\n", " ");
  const int title = story.getIndexOf("\n");
  std::cout << "Substituting \"Maren\" on the copy leaves the original alone: " << copy.getLength() << " against "
            << story.getLength() << " characters; the title in capitals: "
            << KyString(story.getSubString(0, title)).toUpper() << ".\n";

  KyString quote("She said \"one and two\" \\ and flash.");
  std::ostringstream quoted;
  quote.writeQuoted(quoted);
  std::istringstream back(quoted.str() + " tail");
  KyString read;
  read.readQuoted(back);
  std::cout << "Quoted form: " << quoted.str() << "; read back equal: " << (read == quote ? "yes" : "no") << ".\n";

  if (std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr) {
    KyString wide("caf\xC3\xA9 na\xC3\xAFve", 4);
    std::cout << "Under C.UTF-8 a string keeps wide characters: \"" << wide << "\" has " << wide.getLength()
              << " characters in " << wide.getSize() - 1 << " bytes, and the count 4 does not cut it, while\n"
              << "under C the same call keeps 4 bytes. Searching counts characters: \"na\" is at "
              << wide.getIndexOf("na") << ".\n";
    std::setlocale(LC_CTYPE, "C");
  }
}

// Instructions keep their target array after they die; this document's free theirs.
class TourXmlDocument : public KyXmlDocument {
  class Instruction : public KyXmlPI {
   public:
    ~Instruction() override { delete[] getTarget(); }
  };

 public:
  KyXmlPII* createPI() const override { return new Instruction; }
};

void TourXml(const std::string& data) {
  Heading("XML");
  std::ifstream in(data + "/workshop.xml", std::ios::binary);
  TourXmlDocument document;
  KyXmlError::Reset();
  document.read(in);
  KyXmlElement* root = document.getRootElement();
  if (KyXmlError::IsSet() || root == nullptr) {
    std::cout << "Could not read " << data << "/workshop.xml.\n";
    return;
  }
  std::cout << "Read " << data << "/workshop.xml: document type \"" << document.getDoctypeName() << "\", root <"
            << root->getTag() << "> of " << root->getAttributeValue("owner") << " in "
            << root->getAttributeValue("town") << ", " << document.getNodes().getLength()
            << " top-level nodes (the comment and the root).\n";
  for (KyXmlElement* bench = root->getElement("bench", nullptr); bench; bench = root->getElement("bench", bench)) {
    std::cout << "  Bench \"" << bench->getAttributeValue("id") << "\" holds:";
    for (KyXmlElement* tool = bench->getElement("tool", nullptr); tool; tool = bench->getElement("tool", tool))
      std::cout << " [" << tool->getAttributeValue("kind") << ": " << tool->getText() << "]";
    std::cout << "\n";
  }
  std::cout << "A reference splits text into pieces, so getText gives only the first: the chisel's children are\n"
            << "  ";
  KyXmlElement* chisel = root->getElement("bench", nullptr)->getElement("tool", nullptr);
  chisel = root->getElement("bench", nullptr)->getElement("tool", chisel);
  for (Ky_List::Cell* cell = chisel->getChildren().getFirst(); cell; cell = cell->getNext())
    std::cout << "\"" << static_cast<KyXmlTextI*>(cell->getValue())->getText() << "\" ";
  std::cout << "\nWritten back by the library's writer (instructions are left out, text keeps its own blanks):\n";
  document.write(std::cout);

  const char* broken = "<list>\n  <item a='1'b='2'/>\n</list>";
  std::istringstream bad(broken);
  TourXmlDocument other;
  KyXmlError::Reset();
  other.read(bad);
  KyXmlError::Severity severity;
  int code;
  int line;
  const char* name = KyXmlError::Get(severity, code, line);
  std::cout << "Reading a start tag with no blank between two attributes fails with " << (name ? name : "?")
            << " (code " << code << ") on line " << line << ", and the document is left with "
            << other.getNodes().getLength() << " nodes.\n";
  KyXmlError::Reset();
}

void TourLocale() {
  Heading("Locales");
  // Each KyLocale moves the process locale; remember it to put it back at the end.
  const std::string saved = std::setlocale(LC_ALL, nullptr);
  KyLocale* environment = KyLocale::Get(true, nullptr);
  if (environment != nullptr) {
    std::unique_ptr<char[]> name(environment->getStdLocaleName(kCategoryCType));
    std::cout << "environment: " << environment->getSystemLocaleName(kCategoryCType) << " -> "
              << (name ? name.get() : "(not standard)") << "\n";
  }
  for (const char* system : {"C", "C.UTF-8", "French_France.1252"}) {
    std::unique_ptr<char[]> name(KyLocale::GetStdLocaleName(system));
    std::cout << system << " -> " << (name ? name.get() : "(unknown)") << "\n";
  }
  KyLocale* utf8 = KySetLocale("C.UTF-8");
  if (utf8 != nullptr)
    std::cout << "C.UTF-8: encoding " << KyLocale::GetEncodingName(utf8->getEncoding()) << ", up to "
              << utf8->getMaxCharSize() << " bytes a character, ISO-8859-1 text "
              << (utf8->isEncodingCompatible(kISO8859_1) == kNotCompatible ? "not compatible" : "compatible") << "\n";
  std::setlocale(LC_ALL, saved.c_str());
  std::cout << "process locale put back to " << saved << "\n";
}

void TourUrl(const std::string& data) {
  Heading("URL streams");
  const std::string url = "file:" + data + "/journal.txt.gz";
  std::ifstream raw(data + "/journal.txt.gz", std::ios::binary | std::ios::ate);
  KyIUrlStream stream(url.c_str());
  if (stream.fail()) {
    std::cout << url << ": cannot open\n";
    return;
  }
  std::string first;
  std::getline(stream, first);
  std::cout << "Opened " << url << " (" << raw.tellg() << " bytes of gzip); the stream inflates it by itself.\n"
            << "First line: \"" << first << "\"\n";
  std::string rest((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  std::cout << "Read to the end: " << first.size() + 1 + rest.size() << " bytes of text.\n";
  // Everything read is kept, so the stream can go back even over data that came from
  // a network connection.
  stream.clear();
  stream.seekg(first.size() + 1);
  std::string second;
  std::getline(stream, second);
  std::cout << "Seeked back to byte " << first.size() + 1 << " and read again: \"" << second << "\"\n";
}

std::string CalendarDate(KyCalendar& calendar) {
  static const char* const kDays[] = {"", "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  KyDateErrorCode status = kNoError;
  char text[96];
  std::snprintf(text, sizeof text, "%s %ld-%02ld-%02ld %02ld:%02ld", kDays[calendar.get(kDayOfWeek, status)],
                calendar.get(kYear, status), calendar.get(kMonth, status) + 1, calendar.get(kDayOfMonth, status),
                calendar.get(kHourOfDay, status), calendar.get(kMinute, status));
  return text;
}

void TourCalendar() {
  Heading("Calendar");
  KyDateErrorCode status = kNoError;
  KyGregorianCalendar october(1582, 9, 4, status);  // months count from 0
  std::cout << "Julian rule until " << CalendarDate(october);
  october.add(kDayOfMonth, 1, status);
  std::cout << "; one day on it is " << CalendarDate(october) << ", the first Gregorian day.\n";
  KyGregorianCalendar roll(1582, 9, 1, status);
  std::cout << "Rolling the day of the month through October 1582, a month of 21 days:";
  for (int day = 0; day < 22; ++day, roll.roll(kDayOfMonth, true, status))
    std::cout << " " << roll.get(kDayOfMonth, status);
  std::cout << "\n";
  for (long year : {1500L, 1700L}) {
    KyGregorianCalendar leap(year, 1, 29, status);  // lenient: a missing day carries over
    std::cout << "29 February " << year << " reads back as " << CalendarDate(leap) << "\n";
  }
  std::cout << "Weeks start on Monday and the first week may hold one day of the year, so:\n";
  KyGregorianCalendar week(2023, 11, 25, status);
  for (int day = 0; day < 7; ++day, week.add(kDayOfMonth, 1, status))
    std::cout << "  " << CalendarDate(week) << " is week " << week.get(kWeekOfYear, status) << " of "
              << week.get(kYearOfWeek, status) << "\n";
  KyGregorianCalendar when(2024, 4, 15, 15, 30, status);
  const double time = when.getTime(status);
  std::cout << "Snapping " << CalendarDate(when) << " to each time unit (an afternoon day snaps to noon):\n";
  KyPredefinedUnits units;
  for (KyTimeUnit* unit = units.getNextUnit(); unit != nullptr; unit = units.getNextUnit()) {
    when.setTime(time, status);
    unit->snapToPreviousTimeUnit(when);
    std::unique_ptr<char[]> label(unit->toString(when.getTime(status)));
    std::cout << "  " << CalendarDate(when) << "  label " << label.get() << "\n";
  }
}

void TourPaths(const std::string& data) {
  Heading("Paths");
  KyPathName report;
  report.setDosValue("C:\\Data\\Reports\\Q1.summary.txt");
  std::cout << "  device " << report.getDevice() << ", directory " << report.getUnixDirectory(true) << ", file "
            << report.getFileName() << ", extension " << report.getExtension() << "\n";
  std::cout << "  DOS " << report.getDosValue() << "\n  Unix " << report.getUnixValue() << "\n  8.3 "
            << report.get83DosValue() << "\n  truncated to 1 level " << report.getTruncatedValue(1) << "\n";
  KyPathList search;
  search.setList(KyPathName((data + "/no-such-folder/").c_str()));
  search.addInList(KyPathName((data + "/").c_str()));
  std::cout << "  searching " << search.getString() << " for workshop.xml:\n";
  KyPathName found;
  if (search.findInPath("workshop.xml", found, true))
    std::cout << "  found " << static_cast<const char*>(found) << "\n";
  const KyPathName folder((data + "/").c_str());
  const KyPathName pattern("*.(xml|txt)");
  std::set<std::string> names;
  KyPathName entry;
  if (folder.openDir()) {
    while (folder.readDir(entry))
      if (!entry.isDirectory() && entry.match(pattern)) names.insert(static_cast<const char*>(entry));
    folder.closeDir();
  }
  std::cout << "  files matching *.(xml|txt):";
  for (const std::string& name : names) std::cout << " " << name;
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  std::cout << "\n  home " << static_cast<const char*>(context.getHome()) << "\n  module path "
            << context.getModulePath().getString() << "\n";
}

void TourModules() {
#ifdef KY_TOUR_MODULES
  Heading("Modules");
  // The sample plugin's folder joins the module path before the loader's first scan.
  KyGlobalContext::GetInstance().addInModulePathList(KyPathName(KY_TOUR_MODULES "/"));
  KyModule::ReScan();
  unsigned long count = 0;
  KyModuleDescriptor** array = KyModule::GetDescriptors(count);
  const std::vector<KyModuleDescriptor*> descriptors(array, array + count);  // the pool block is lent
  for (KyModuleDescriptor* descriptor : descriptors)
    std::cout << "descriptor " << (descriptor->getName() != nullptr ? descriptor->getName() : "") << ", version "
              << descriptor->getVersion() << ", library "
              << descriptor->getLibraryPath().getString(KyPathName::kSystemPathType) << "\n";
  KyModule* greeter = KyModule::Load("greeter", const_cast<char*>("tour"));
  std::cout << "Load(\"greeter\") " << (greeter != nullptr ? "gave a module" : "failed") << ", status "
            << KyModule::GetError() << "; a second Load gives the same object: "
            << (KyModule::Load("greeter.so", nullptr) == greeter ? "yes" : "no") << "\n";
#endif
}

}  // namespace

int main(int argc, char** argv) {
  const std::string data = argc > 1 ? argv[1] : "examples/data";
  const std::string text = ReadFile(data + "/sample.txt");
  if (text.empty()) {
    std::cerr << "tour: cannot read " << data << "/sample.txt\n";
    return 1;
  }
  const std::vector<std::string> words = Words(text);
  std::cout << "kybase tour on " << data << "/sample.txt (" << text.size() << " bytes, " << words.size()
            << " words)\n";
  TourMemory(words);
  TourHashTable(words);
  TourContainers(words);
  TourNumbers(data);
  TourStrings(text);
  TourXml(data);
  TourLocale();
  TourUrl(data);
  TourCalendar();
  TourModules();
  TourPaths(data);
  return 0;
}
