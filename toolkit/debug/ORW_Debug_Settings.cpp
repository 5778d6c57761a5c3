#include <algorithm>
#include <string_view>

#include "ORW_Debug.h"
#include "reference_counted.h"

namespace {

using quillmere::Owned;

struct BooleanSetting {
  const char* key;
  Boolean DbgPrintSett::*field;
  Boolean initial;
};
constexpr BooleanSetting kBooleans[] = {
    {"Write To File", &DbgPrintSett::writeToFile, 1},
    {"Send To TextEdit", &DbgPrintSett::sendToTextEdit, 0},
    {"Print Thread Name", &DbgPrintSett::printThreadName, 1},
    {"Print Comp Name", &DbgPrintSett::printCompName, 1},
    {"Print Time", &DbgPrintSett::printTime, 1},
    {"Print Line Number", &DbgPrintSett::printLineNumber, 1},
    {"Print File Name", &DbgPrintSett::printFileName, 1},
    {"Print Label", &DbgPrintSett::printLabel, 1},
    {"Print Error Name", &DbgPrintSett::printErrorName, 1},
    {"Print Error Comment", &DbgPrintSett::printErrorComment, 1},
};

struct NumberSetting {
  const char* key;
  SInt32 DbgPrintSett::*field;
  SInt32 initial;
};
constexpr NumberSetting kNumbers[] = {
    {"Verbosity Level", &DbgPrintSett::verbosityLevel, 1},
    {"Calling Chain Depth", &DbgPrintSett::callingChainDepth, 10},
};

constexpr struct {
  OSType tag;
  const char* name;
} kComponents[] = {
    {"maiN"_4cc, "main"},
    {"mofX"_4cc, "File objects"},
    {"MOSL"_4cc, "MoreOSL"},
    {"PClA"_4cc, "Pseudo class accessors"},
    {"ClAc"_4cc, "Class accessors"},
    {"CoCC"_4cc, "Compare, count, coerce"},
    {"AEHa"_4cc, "AEvent handling"},
};

}  // namespace

void DBG_MakeDefaultDbgPrintSett(DbgPrintSett* settings) {
  if (settings == nullptr) return;
  for (const BooleanSetting& setting : kBooleans)
    settings->*setting.field = setting.initial;
  for (const NumberSetting& setting : kNumbers)
    settings->*setting.field = setting.initial;
}

Boolean DBG_EqualDbgPrintSett(const DbgPrintSett* a, const DbgPrintSett* b) {
  if (a == nullptr || b == nullptr) return a == b ? 1 : 0;
  for (const BooleanSetting& setting : kBooleans) {
    if ((a->*setting.field != 0) != (b->*setting.field != 0)) return 0;
  }
  for (const NumberSetting& setting : kNumbers) {
    if (a->*setting.field != b->*setting.field) return 0;
  }
  return 1;
}

Boolean DBG_DbgPrintSettEqualDefault(const DbgPrintSett* settings) {
  DbgPrintSett initial{};
  DBG_MakeDefaultDbgPrintSett(&initial);
  return DBG_EqualDbgPrintSett(settings, &initial);
}

SInt32 DBG_CreateSettDict(const DbgPrintSett* settings, CFDictionaryRef* dictionary) {
  if (dictionary != nullptr) *dictionary = nullptr;
  if (settings == nullptr || dictionary == nullptr) return paramErr;
  Owned<CFMutableDictionaryRef> made(CFDictionaryCreateMutable(kCFAllocatorDefault));
  for (const BooleanSetting& setting : kBooleans) {
    CFDictionarySetValue(made.get(), CFSTR(setting.key),
                         settings->*setting.field != 0 ? kCFBooleanTrue : kCFBooleanFalse);
  }
  for (const NumberSetting& setting : kNumbers) {
    const Owned<CFNumberRef> number(
        CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &(settings->*setting.field)));
    CFDictionarySetValue(made.get(), CFSTR(setting.key), number.get());
  }
  *dictionary = made.release();
  return noErr;
}

void DBG_GetSettFromDict(CFDictionaryRef dictionary, DbgPrintSett* settings) {
  if (settings == nullptr) return;
  DBG_MakeDefaultDbgPrintSett(settings);
  if (dictionary == nullptr) return;
  for (const BooleanSetting& setting : kBooleans) {
    CFTypeRef value = CFDictionaryGetValue(dictionary, CFSTR(setting.key));
    if (CFBooleanRef truth = quillmere::AsBoolean(value)) {
      settings->*setting.field = CFBooleanGetValue(truth);
    }
  }
  for (const NumberSetting& setting : kNumbers) {
    CFTypeRef value = CFDictionaryGetValue(dictionary, CFSTR(setting.key));
    SInt32 number = 0;
    CFNumberRef found = quillmere::AsNumber(value);
    if (found != nullptr && CFNumberGetValue(found, kCFNumberSInt32Type, &number) != 0) {
      settings->*setting.field = number;
    }
  }
}

void DBG_PrefsGetDebugMessagesDestinationString(const DbgPrintSett* settings, char* out) {
  if (settings == nullptr || out == nullptr) return;
  const std::string_view text = settings->writeToFile != 0      ? "Destination: file\n"
                                : settings->sendToTextEdit != 0 ? "Destination: TextEdit\n"
                                                                : "Destination: Console\n";
  *std::copy(text.begin(), text.end(), out) = '\0';
}

const char* DBG_GetSubComponentName(OSType tag) {
  for (const auto& component : kComponents) {
    if (component.tag == tag) return component.name;
  }
  return "";
}
