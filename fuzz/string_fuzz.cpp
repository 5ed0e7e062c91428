// Drives KyString with arbitrary bytes in both representations: strings are made under
// "C" (single byte) or "C.UTF-8" (multi byte) and worked on under either, so mixed
// kinds and invalid sequences are reached. Input layout: one control byte (bit 0: locale
// of the text, bit 1: locale of the other strings, bit 2: locale of the call, bits 3-5:
// the operation), six range bytes, then up to three texts separated by zero bytes.
// Wildcard results are checked against the recursive definition, quoted text must read
// back as written, and every body must keep its lengths consistent.
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kybase/text/kystring.h"
#include "kybase/text/mb_string.h"

namespace {

const char* LocaleName(bool multiByte) { return multiByte ? "C.UTF-8" : "C"; }

void Enter(bool multiByte) { std::setlocale(LC_ALL, LocaleName(multiByte)); }

void Require(bool condition) {
  if (!condition) std::abort();
}

// The body's characters as numbers: bytes, or wide units.
std::vector<long> Units(const KyString& s) {
  std::vector<long> units;
  const KyInternalString* body = s.getInternalString();
  if (const auto* wide = dynamic_cast<const KyMBString*>(body)) {
    for (int i = 0; i < body->getLength(); ++i) units.push_back(static_cast<long>(wide->getWideValue()[i]));
  } else {
    for (int i = 0; i < body->getLength(); ++i) units.push_back(static_cast<unsigned char>(body->getValue()[i]));
  }
  return units;
}

void CheckBody(const KyString& s) {
  const KyInternalString* body = s.getInternalString();
  Require(body->getRefCount() >= 1);
  Require(std::strlen(body->getValue()) + 1 <= body->getSize());
  if (const auto* wide = dynamic_cast<const KyMBString*>(body)) {
    Require(wide->getWideSize() == body->getLength() + 1);
    Require(std::wcslen(wide->getWideValue()) <= static_cast<std::size_t>(body->getLength()));
    Require(std::strlen(body->getValue()) + 1 == body->getSize());
  } else {
    Require(body->getSize() == static_cast<unsigned int>(body->getLength()) + 1);
  }
}

// The wildcard language by its recursive definition, with a memo.
class ReferenceMatch {
 public:
  ReferenceMatch(std::vector<long> text, std::vector<long> pattern)
      : t_(std::move(text)), p_(std::move(pattern)), memo_((t_.size() + 1) * (p_.size() + 1), -1) {}

  bool at(std::size_t i, std::size_t j) {
    signed char& known = memo_[i * (p_.size() + 1) + j];
    if (known < 0) known = compute(i, j) ? 1 : 0;
    return known == 1;
  }

 private:
  bool compute(std::size_t i, std::size_t j) {
    if (i == t_.size()) {
      for (; j < p_.size(); ++j)
        if (p_[j] != '*') return false;
      return true;
    }
    if (j == p_.size()) return false;
    if (p_[j] == '?' || p_[j] == t_[i]) return at(i + 1, j + 1);
    if (p_[j] != '*') return false;
    return at(i + 1, j) || at(i, j + 1) || at(i + 1, j + 1);
  }

  const std::vector<long> t_;
  const std::vector<long> p_;
  std::vector<signed char> memo_;
};

std::string Quoted(const KyString& s) {
  std::ostringstream out;
  s.writeQuoted(out);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = [] {
    std::cerr.rdbuf(nullptr);  // reversed ranges are reported there
    return true;
  }();
  (void)quiet;
  if (size < 7) return 0;
  const std::uint8_t control = data[0];
  int r[6];
  for (int k = 0; k < 6; ++k) r[k] = static_cast<std::int8_t>(data[1 + k]) % 40;
  std::vector<std::string> parts(3);
  std::size_t part = 0;
  for (std::size_t i = 7; i < size; ++i) {
    if (data[i] == 0 && part < 2)
      ++part;
    else
      parts[part] += static_cast<char>(data[i]);
  }
  const std::string raw(reinterpret_cast<const char*>(data + 7), size - 7);

  Enter(control & 1);
  KyString text(parts[0].c_str());
  Enter(control & 2);
  KyString other(parts[1].c_str());
  KyString third(parts[2].c_str());
  const bool callMultiByte = (control & 4) != 0;
  Enter(callMultiByte);

  switch ((control >> 3) & 7) {
    case 0: {
      const bool match = text.matches(other, r[0], r[1], r[2], r[3]);
      const bool sameKind =
          text.getInternalString()->isMultiByte() == other.getInternalString()->isMultiByte();
      if (sameKind && text.getLength() <= 64 && other.getLength() <= 64) {
        ReferenceMatch reference(Units(text), Units(other));
        Require(text.matches(other) == (text.isEmpty() && other.isEmpty() ? true : reference.at(0, 0)));
      }
      (void)match;
      break;
    }
    case 1:
      text.substitute(other, third, r[0], r[1], r[2], r[3], r[4], r[5]);
      CheckBody(text);
      // Substituting a string into itself squares its length: keep that small.
      if (text.getLength() <= 4096) {
        text.substitute(other, text);
        CheckBody(text);
      }
      break;
    case 2: {
      std::istringstream in(raw);
      text.readQuoted(in);
      CheckBody(text);
      text.readQuoted(in);
      CheckBody(text);
      break;
    }
    case 3: {
      std::istringstream in(raw);
      for (int tokens = 0; tokens < 64 && in.good(); ++tokens) {
        in >> text;
        CheckBody(text);
      }
      break;
    }
    case 4:
      (void)text.compare(other, r[0], r[1], r[2], r[3]);
      (void)text.caseCompare(other, r[0], r[1], r[2], r[3]);
      (void)text.equals(other, r[0], r[1], r[2], r[3]);
      (void)text.getIndexOf(other, r[0], r[1], r[2]);
      (void)text.getLastIndexOf(other, r[3], r[4], r[5]);
      (void)text.startsWith(other, r[0], r[1]);
      (void)text.endsWith(other, r[2], r[3]);
      break;
    case 5:
      text.replace(other, r[0], r[1], r[2], r[3]);
      CheckBody(text);
      text.insert(third, r[4], r[5]);
      text.remove(r[0], r[1]);
      text.remove(other, r[2], r[3]);
      text.catenate(text, r[4], r[5]);
      CheckBody(text);
      break;
    case 6: {
      KyString part = text.getSubString(r[0], r[1]);
      CheckBody(part);
      part.toUpper();
      text.toLower();
      CheckBody(part);
      CheckBody(text);
      (void)text.isBlank();
      break;
    }
    default: {
      KyString back("x");
      std::istringstream in(Quoted(text));
      back.readQuoted(in);
      CheckBody(back);
      if (((control & 1) != 0) == callMultiByte) Require(std::strcmp(back.getValue(), text.getValue()) == 0);
      break;
    }
  }
  std::setlocale(LC_ALL, "C");
  return 0;
}
