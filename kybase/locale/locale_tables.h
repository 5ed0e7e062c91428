// The vocabulary of locale naming: the standard encodings (KyEncoding, values 0 to 41,
// 0 unknown) and how two of them relate (KyEncodingCompat). The tables behind them and
// the recognisers of system spellings are internal to the locale layer; clients reach
// them through the static name services of KyLocale and KyLocaleExtension.
#ifndef KYBASE_LOCALE_LOCALE_TABLES_H
#define KYBASE_LOCALE_LOCALE_TABLES_H

/// The standard encodings, by the values the name tables use; 0 is unknown.
enum KyEncoding {
  kUnknownEncoding = 0,
  kUSASCII = 1,
  kISO8859_1 = 2,
  kISO8859_2 = 3,
  kISO8859_3 = 4,
  kISO8859_4 = 5,
  kISO8859_5 = 6,
  kISO8859_6 = 7,
  kISO8859_7 = 8,
  kISO8859_8 = 9,
  kISO8859_9 = 10,
  kISO8859_10 = 11,
  kEUCJP = 12,
  kShiftJIS = 13,
  kEUCKR = 14,
  kGB2312 = 15,
  kBig5 = 16,
  kBig5HKSCS = 17,
  kEUCTW = 18,
  kHPRoman8 = 19,
  kIBM850 = 20,
  kWindows1250 = 21,
  kWindows1251 = 22,
  kWindows1252 = 23,
  kWindows1253 = 24,
  kWindows1254 = 25,
  kWindows1255 = 26,
  kWindows1256 = 27,
  kWindows1257 = 28,
  kWindows1258 = 29,
  kUTF8 = 30,
  kISO8859_11 = 31,
  kISO8859_13 = 32,
  kISO8859_14 = 33,
  kISO8859_15 = 34,
  kWindows949 = 35,
  kWindows874 = 36,
  kGBK = 37,
  kDECKanji = 38,
  kDECKorean = 39,
  kDECHanzi = 40,
  kDECHanyu = 41,
};

/// How text in one encoding reads under another.
enum KyEncodingCompat {
  kNotCompatible = 0,     ///< characters may be lost or misread
  kCompatible = 1,        ///< every character reads the same
  kPartlyCompatible = 2,  ///< the common part (such as ASCII) reads the same
};

#endif  // KYBASE_LOCALE_LOCALE_TABLES_H
