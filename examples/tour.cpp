// A tour of libkybase on the sample data: each subsystem shows, in plain words, what it
// does with real input. Run as: tour <data directory>.
#include <kybase/kybase.h>

#include <cstdio>
#include <fstream>
#include <iostream>
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
  std::cout << "After unlocking, a request of 20 characters reuses the first free buffer that fits: "
            << (KyCharPool::Alloc(20, false) == buffer || KyCharPool::Alloc(20, false) == other ? "yes" : "no") << ".\n";
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
  return 0;
}
