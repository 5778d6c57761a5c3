#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cf_dates.h"
#include "cf_url_resources.h"
#include "property_lists.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::TemporaryFolder;
using List = Owned<CFPropertyListRef>;

template <class Ref>
List Any(Ref made) {
  return List(made);
}

template <class T>
List Number(CFNumberType type, T value) {
  return Any(CFNumberCreate(nullptr, type, &value));
}

List Real(double value) {
  return Number(kCFNumberFloat64Type, value);
}

List String(std::u16string_view units) {
  return Any(CFStringCreateWithCharacters(nullptr, units.data(), std::ssize(units)));
}

List DateOf(double time) {
  return Any(CFDateCreate(nullptr, time));
}

List Data(std::string_view bytes) {
  return Any(
      CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), std::ssize(bytes)));
}

std::string XmlOf(CFPropertyListRef list) {
  const Owned<CFDataRef> data(CFPropertyListCreateXMLData(nullptr, list));
  if (!data) return {};
  return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
                     static_cast<std::size_t>(CFDataGetLength(data.get())));
}

List ListOf(std::string_view xml) {
  const List data = Data(xml);
  return List(CFPropertyListCreateFromXMLData(nullptr, quillmere::AsData(data.get()),
                                              kCFPropertyListImmutable, nullptr));
}

/// One value in a document.
List ValueOf(const std::string& element) {
  return ListOf("<plist version=\"1.0\">" + element + "</plist>");
}

/// Values at the limits of every kind.
std::vector<List> EveryKind() {
  std::vector<List> values;
  for (const SInt64 value :
       {SInt64{0}, SInt64{-1}, SInt64{1} << 53, std::numeric_limits<SInt64>::max(),
        std::numeric_limits<SInt64>::min()}) {
    values.push_back(Number(kCFNumberSInt64Type, value));
  }
  values.push_back(Number(kCFNumberSInt8Type, SInt8{-128}));
  values.push_back(Number(kCFNumberSInt16Type, SInt16{32767}));
  values.push_back(Number(kCFNumberSInt32Type, std::numeric_limits<SInt32>::min()));
  values.push_back(Number(kCFNumberShortType, SInt16{-32768}));
  values.push_back(Number(kCFNumberFloat32Type, 0.1F));
  values.push_back(Any(quillmere::CreateUnsignedNumber(std::numeric_limits<UInt64>::max())));
  for (const double value : {0.1, -0.0, 1e308, 5e-324, 1.0 / 3, 123456789012345678.0, -1e-7}) {
    values.push_back(Real(value));
    values.push_back(Real(std::nextafter(value, 1.0)));
  }
  values.push_back(Real(std::numeric_limits<double>::infinity()));
  values.push_back(Real(-std::numeric_limits<double>::infinity()));
  values.push_back(Real(std::nan("")));
  for (const char* bytes : {"", "a", "ab", "abc", "abcd", "\xFF\xFE\xFD"})
    values.push_back(Data(bytes));
  values.push_back(Data(std::string(1000, '\0')));
  for (const double time : {0.0, -1.0, -63113904000.0, 252423993599.0, 86399.0, -978307200.0})
    values.push_back(DateOf(time));
  for (const std::u16string_view text :
       {u"", u" ", u"\n\t ", u"<&>\"'", u"]]>", u"&amp;", u"Grüße \U0001F600", u"a\rb\r\nc",
        u"\u0085\u2028\uF8FF"}) {
    values.push_back(String(text));
  }
  values.push_back(Any(CFRetain(kCFBooleanTrue)));
  values.push_back(Any(CFRetain(kCFBooleanFalse)));
  return values;
}

/// Units that XML has no character for.
std::vector<List> HardStrings() {
  std::vector<List> values;
  for (const std::u16string& text :
       {std::u16string(1, u'\0'), std::u16string(u"a\x01z"), std::u16string(u"\x1F\xFFFE\xFFFF"),
        std::u16string(1, char16_t{0xD800}), std::u16string{0xDC00, 0xD800, u'x'},
        std::u16string(u"\0\0\0 ", 4)}) {
    values.push_back(String(text));
  }
  return values;
}

TEST(PropertyLists, EveryValueComesBackEqual) {
  const Owned<CFMutableDictionaryRef> all(CFDictionaryCreateMutable(nullptr));
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr));
  std::vector<List> values = EveryKind();
  for (List& hard : HardStrings())
    values.push_back(std::move(hard));
  for (const List& value : values) {
    const std::string xml = XmlOf(value.get());
    const List read = ListOf(xml);
    EXPECT_TRUE(CFEqual(value.get(), read.get())) << xml;
    EXPECT_EQ(XmlOf(read.get()), xml);
    CFArrayAppendValue(array.get(), value.get());
    if (const CFStringRef key = quillmere::AsString(value.get()))
      CFDictionarySetValue(all.get(), key, value.get());
  }
  const Owned<CFMutableArrayRef> empty(CFArrayCreateMutable(nullptr));
  CFArrayAppendValue(array.get(), empty.get());
  CFDictionarySetValue(all.get(), CFSTR("list"), array.get());
  const List read = ListOf(XmlOf(all.get()));
  EXPECT_TRUE(CFEqual(all.get(), read.get()));
  EXPECT_EQ(XmlOf(read.get()), XmlOf(all.get()));  // the order of keys is kept too
}

TEST(PropertyLists, NumbersKeepSignAndWidth) {
  double value = 1;
  const List zero = ListOf(XmlOf(Real(-0.0).get()));
  CFNumberGetValue(quillmere::AsNumber(zero.get()), kCFNumberFloat64Type, &value);
  EXPECT_TRUE(std::signbit(value));
  const List large = ListOf(XmlOf(Any(quillmere::CreateUnsignedNumber(~UInt64{0} - 1)).get()));
  UInt64 bits = 0;
  EXPECT_FALSE(CFNumberGetValue(quillmere::AsNumber(large.get()), kCFNumberSInt64Type, &bits));
  EXPECT_EQ(bits, ~UInt64{0} - 1);
  const List byte = Number(kCFNumberSInt8Type, UInt8{200});
  EXPECT_EQ(CFNumberGetType(quillmere::AsNumber(byte.get())), kCFNumberSInt8Type);
  EXPECT_TRUE(CFEqual(byte.get(), Number(kCFNumberSInt64Type, SInt64{-56}).get()));
  EXPECT_TRUE(CFEqual(Real(2).get(), Number(kCFNumberSInt8Type, SInt8{2}).get()));
  EXPECT_FALSE(CFEqual(Real(2).get(), kCFBooleanTrue));
}

// Python says of each value what it is; both directions have to agree.
TEST(PropertyLists, AgreeWithPython) {
  const TemporaryFolder folder;
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr));
  for (const List& value : EveryKind())
    CFArrayAppendValue(array.get(), value.get());
  const Owned<CFMutableDictionaryRef> top(CFDictionaryCreateMutable(nullptr));
  CFDictionarySetValue(top.get(), CFSTR("<k&>\r"), array.get());
  quillmere::test::WriteFile(folder / "ours.plist", XmlOf(top.get()));
  quillmere::test::WriteFile(folder / "check.py", R"(
import datetime, math, plistlib, struct, sys
folder = sys.argv[1]
with open(folder + '/ours.plist', 'rb') as f:
    ours = plistlib.load(f)
up = lambda x: math.nextafter(x, 1.0)
reals = [y for x in (0.1, -0.0, 1e308, 5e-324, 1/3, 123456789012345678.0, -1e-7) for y in (x, up(x))]
date = lambda s: datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=s)
expected = [0, -1, 2**53, 2**63 - 1, -2**63, -128, 32767, -2**31, -32768,
            struct.unpack('f', struct.pack('f', 0.1))[0], 2**64 - 1] + reals + \
    [math.inf, -math.inf, math.nan, b'', b'a', b'ab', b'abc', b'abcd', b'\xff\xfe\xfd', bytes(1000)] + \
    [date(s) for s in (0, -1, -63113904000, 252423993599, 86399, -978307200)] + \
    ['', ' ', '\n\t ', '<&>"\'', ']]>', '&amp;', 'Grüße \U0001F600', 'a\rb\r\nc', '\u0085\u2028\uf8ff'] + \
    [True, False]
assert repr(ours) == repr({'<k&>\r': expected}), repr(ours)
theirs = {'b': expected[:-11] + ['x', ' y '], 'a': {'n': {}, 'l': []}, 'z': True, 'd': bytes(range(256)) * 9}
with open(folder + '/theirs.plist', 'wb') as f:
    plistlib.dump(theirs, f)
)");
  quillmere::test::RunOrFail({"python3", (folder / "check.py").string(), folder.path().string()});

  const quillmere::test::Bytes bytes = quillmere::test::ReadFile(folder / "theirs.plist");
  const List theirs = ListOf({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  ASSERT_NE(theirs.get(), nullptr);
  const CFArrayRef read =
      quillmere::AsArray(CFDictionaryGetValue(quillmere::AsDictionary(theirs.get()), CFSTR("b")));
  const CFIndex shared = CFArrayGetCount(array.get()) - 11;
  ASSERT_EQ(CFArrayGetCount(read), shared + 2);
  for (CFIndex i = 0; i < shared; ++i) {
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(read, i), CFArrayGetValueAtIndex(array.get(), i)))
        << i;
  }
  EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(read, shared + 1), String(u" y ").get()));

  quillmere::test::WriteFile(folder / "again.plist", XmlOf(theirs.get()));
  quillmere::test::RunOrFail({"python3", "-c",
                              "import plistlib, sys\n"
                              "a, b = (repr(plistlib.load(open(p, 'rb'))) for p in sys.argv[1:])\n"
                              "assert a == b",
                              (folder / "theirs.plist").string(),
                              (folder / "again.plist").string()});
}

TEST(PropertyLists, OtherReadersPassOverUnitsOutsideXml) {
  const TemporaryFolder folder;
  quillmere::test::WriteFile(folder / "hard.plist", XmlOf(String(u"a\x01z").get()));
  EXPECT_EQ(
      quillmere::test::RunOrFail(
          {"python3", "-c", "import plistlib, sys; print(plistlib.load(open(sys.argv[1], 'rb')))",
           (folder / "hard.plist").string()}),
      "az\n");
}

TEST(PropertyLists, ReadsWhatOthersMayWrite) {
  const struct {
    const char* element;
    List value;
  } cases[] = {
      {"<string>a<!-- no -->b<![CDATA[<&c]]></string>", String(u"ab<&c")},
      {"<string>&#65;&#x1F600;&quot;&apos;</string>", String(u"A\U0001F600\"'")},
      {"<string>a\r\nb\rc</string>", String(u"a\nb\nc")},
      {"<string/>", String(u"")},
      {"<integer> +0x1F </integer>", Number(kCFNumberSInt64Type, SInt64{31})},
      {"<integer>-0x8000000000000000</integer>",
       Number(kCFNumberSInt64Type, std::numeric_limits<SInt64>::min())},
      {"<real>+1e2</real>", Real(100)},
      {"<real>Infinity</real>", Real(std::numeric_limits<double>::infinity())},
      {"<data> Y W\n\tJ\rj </data>", Data("abc")},
      {"<data/>", Data("")},
      {"<true></true>", Any(CFRetain(kCFBooleanTrue))},
      {"<date>\n2001-01-01T00:00:01Z </date>", DateOf(1)},
      {"<date>2000-02-29T23:59:59Z</date>", DateOf(-26438401)},
  };
  for (const auto& test : cases)
    EXPECT_TRUE(CFEqual(ValueOf(test.element).get(), test.value.get())) << test.element;
  EXPECT_TRUE(CFEqual(ListOf("<true/>").get(), kCFBooleanTrue));
  EXPECT_TRUE(CFEqual(ListOf("\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!DOCTYPE plist SYSTEM \"x\">"
                             "<!-- c --><plist><true/></plist>\n")
                          .get(),
                      kCFBooleanTrue));
  const std::u16string wide = u"\uFEFF<plist><string>\u00E4</string></plist>";
  EXPECT_TRUE(CFEqual(
      ListOf({reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char16_t)}).get(),
      String(u"\u00E4").get()));
  const List twice = ValueOf("<dict><key>a</key><true/><key>a</key><false/></dict>");
  EXPECT_TRUE(CFEqual(CFDictionaryGetValue(quillmere::AsDictionary(twice.get()), CFSTR("a")),
                      kCFBooleanFalse));
}

TEST(PropertyLists, RefusesWhatIsDamaged) {
  const char* const documents[] = {"",
                                   "text",
                                   "<plist/>",
                                   "<plist><true/><true/></plist>",
                                   "<plist><true/></plist>x",
                                   "x<plist><true/></plist>",
                                   "<plist><true/>",
                                   "<true/><true/>",
                                   "<html></html>",
                                   "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>",
                                   "bplist00\xA0\x08\0\0"};
  for (const char* document : documents)
    EXPECT_EQ(ListOf(document).get(), nullptr) << document;
  const char* const elements[] = {"<string>&a;</string>",
                                  "<string>&</string>",
                                  "<string>&#0;</string>",
                                  "<string>&#xD800;</string>",
                                  "<string>&#x110000;</string>",
                                  "<string>\xFF</string>",
                                  "<string><true/></string>",
                                  "<string><?utf16 10000?></string>",
                                  "<string><?utf16 x?></string>",
                                  "<integer></integer>",
                                  "<integer>1.0</integer>",
                                  "<integer>1 2</integer>",
                                  "<integer>--1</integer>",
                                  "<integer>18446744073709551616</integer>",
                                  "<integer>-9223372036854775809</integer>",
                                  "<real></real>",
                                  "<real>1,5</real>",
                                  "<real>+-1</real>",
                                  "<date>2001-02-29T00:00:00Z</date>",
                                  "<date>2001-01-01T24:00:00Z</date>",
                                  "<date>0000-01-01T00:00:00Z</date>",
                                  "<date>2001-01-01 00:00:00</date>",
                                  "<date/>",
                                  "<data>abc</data>",
                                  "<data>ab==cd==</data>",
                                  "<data>a===</data>",
                                  "<data>====</data>",
                                  "<data>ab\xC3\xA4=</data>",
                                  "<data>ab!=</data>",
                                  "<true>x</true>",
                                  "<key>a</key>",
                                  "<dict><true/></dict>",
                                  "<dict><key>a</key></dict>",
                                  "<dict><key>a</key><key>b</key></dict>",
                                  "<dict>x</dict>",
                                  "<array>x</array>",
                                  "<array><key>a</key></array>",
                                  "<set/>",
                                  "<array><true></array></true>"};
  for (const char* element : elements)
    EXPECT_EQ(ValueOf(element).get(), nullptr) << element;

  CFStringRef text = nullptr;
  const List data = Data("<plist>");
  EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, quillmere::AsData(data.get()), 0, &text),
            nullptr);
  EXPECT_GT(CFStringGetLength(text), 0);
  CFRelease(text);
  EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, nullptr, 0, nullptr), nullptr);
}

TEST(PropertyLists, EveryCutOfADocumentIsRefused) {
  const Owned<CFMutableDictionaryRef> list(CFDictionaryCreateMutable(nullptr));
  CFDictionarySetValue(list.get(), CFSTR("a"), kCFBooleanTrue);
  CFDictionarySetValue(list.get(), CFSTR("b"), Data("some bytes").get());
  const std::string xml = XmlOf(list.get());
  for (std::size_t size = 0; size < xml.size() - 1; ++size)
    EXPECT_EQ(ListOf(std::string_view(xml).substr(0, size)).get(), nullptr) << size;
}

std::string Nested(int depth) {
  std::string xml;
  for (int i = 0; i < depth; ++i)
    xml += "<array>";
  for (int i = 0; i < depth; ++i)
    xml += "</array>";
  return xml;
}

TEST(PropertyLists, HoldsToItsLimits) {
  EXPECT_NE(ListOf(Nested(quillmere::kDeepestPropertyList)).get(), nullptr);
  EXPECT_EQ(ListOf(Nested(quillmere::kDeepestPropertyList + 1)).get(), nullptr);
  EXPECT_EQ(ListOf(Nested(200000)).get(), nullptr);

  const List deepest = ListOf(Nested(quillmere::kDeepestPropertyList));
  EXPECT_FALSE(XmlOf(deepest.get()).empty());
  const Owned<CFMutableArrayRef> deeper(CFArrayCreateMutable(nullptr));
  CFArrayAppendValue(deeper.get(), deepest.get());
  EXPECT_TRUE(XmlOf(deeper.get()).empty());
  EXPECT_EQ(CFPropertyListCreateDeepCopy(nullptr, deeper.get(), 0), nullptr);

  std::string many = "<array>";
  for (int i = 1; i < quillmere::kMostPropertyListValues; ++i)
    many += "<true/>";
  EXPECT_NE(ListOf(many + "</array>").get(), nullptr);
  EXPECT_EQ(ListOf(many + "<true/></array>").get(), nullptr);

  const auto limit = static_cast<std::size_t>(quillmere::kLargestPropertyList);
  const std::string start = "<string>";
  const std::string end = "</string>";
  EXPECT_NE(ListOf(start + std::string(limit - start.size() - end.size(), 'a') + end).get(),
            nullptr);
  EXPECT_EQ(ListOf(start + std::string(limit - start.size() - end.size() + 1, 'a') + end).get(),
            nullptr);
  EXPECT_TRUE(XmlOf(Data(std::string(limit, 'x')).get()).empty());

  for (const double time :
       {252423993600.0, -63113904001.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_TRUE(XmlOf(DateOf(time).get()).empty()) << time;
  }
  EXPECT_TRUE(CFEqual(ListOf(XmlOf(DateOf(-0.25).get())).get(), DateOf(-1).get()));
  EXPECT_TRUE(XmlOf(nullptr).empty());
  const Owned<CFURLRef> url(quillmere::CreateUrlOfPath("/"));
  EXPECT_TRUE(XmlOf(url.get()).empty());
}

TEST(PropertyLists, DictionariesOfManyKeysStayInOrder) {
  const Owned<CFMutableDictionaryRef> many(CFDictionaryCreateMutable(nullptr));
  constexpr int kCount = 20000;
  std::vector<int> order(kCount);
  for (int i = 0; i < kCount; ++i)
    order[static_cast<std::size_t>(i)] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(7));
  const auto key_of = [](int i) {
    return Owned<CFStringRef>(quillmere::CreateFromUtf8(std::to_string(i)));
  };
  for (const int i : order)
    CFDictionarySetValue(many.get(), key_of(i).get(), key_of(i).get());
  CFDictionaryRemoveValue(many.get(), key_of(order[1]).get());
  CFDictionarySetValue(many.get(), key_of(order[2]).get(), kCFBooleanTrue);
  ASSERT_EQ(CFDictionaryGetCount(many.get()), kCount - 1);
  const Owned<CFMutableDictionaryRef> copy(CFDictionaryCreateMutableCopy(nullptr, many.get()));
  EXPECT_TRUE(CFEqual(copy.get(), many.get()));
  EXPECT_EQ(CFDictionaryGetValue(copy.get(), key_of(order[1]).get()), nullptr);
  EXPECT_EQ(CFDictionaryGetValue(copy.get(), key_of(order[2]).get()), kCFBooleanTrue);
  std::vector<CFStringRef> keys(kCount - 1);
  CFDictionaryGetKeysAndValues(copy.get(), keys.data(), nullptr);
  EXPECT_EQ(quillmere::ToUtf8(keys[0]), std::to_string(order[0]));
  EXPECT_EQ(quillmere::ToUtf8(keys.back()), std::to_string(order.back()));
  for (std::size_t i = 1; i < keys.size(); ++i)
    ASSERT_EQ(quillmere::ToUtf8(keys[i]), std::to_string(order[i + 1]));
}

TEST(PropertyLists, DeepCopiesShareNoContainers) {
  const Owned<CFMutableDictionaryRef> inner(CFDictionaryCreateMutable(nullptr));
  const Owned<CFMutableArrayRef> outer(CFArrayCreateMutable(nullptr));
  const Owned<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
  CFArrayAppendValue(outer.get(), inner.get());
  CFArrayAppendValue(outer.get(), text.get());
  const List copy(CFPropertyListCreateDeepCopy(nullptr, outer.get(), 0));
  const std::string before = XmlOf(copy.get());
  CFDictionarySetValue(inner.get(), CFSTR("a"), kCFBooleanTrue);
  CFStringAppend(text.get(), CFSTR("x"));
  EXPECT_EQ(XmlOf(copy.get()), before);
  EXPECT_NE(XmlOf(outer.get()), before);
}

}  // namespace
