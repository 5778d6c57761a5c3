// The dictionary forms of the records of QT_Ide.h.

#include "GL_CF.h"
#include "QT_Ide.h"

namespace {

const CFStringRef kFields = CFSTR("Fields");
const CFStringRef kDetail = CFSTR("Detail");
const CFStringRef kHorizontal = CFSTR("Horizontal Spacing");
const CFStringRef kVertical = CFSTR("Vertical Spacing");
const CFStringRef kPrimaries = CFSTR("Primaries");
const CFStringRef kTransferFunction = CFSTR("Transfer Function");
const CFStringRef kMatrix = CFSTR("Matrix");

/// The keys of the unsigned fields of a clean aperture and where they stand.
struct ClapKey {
  CFStringRef key;
  UInt32 QT_Clap::*field;
};
const ClapKey kClapKeys[] = {{CFSTR("Width numerator"), &QT_Clap::cleanApertureWidthN},
                             {CFSTR("Width denominator"), &QT_Clap::cleanApertureWidthD},
                             {CFSTR("Height numerator"), &QT_Clap::cleanApertureHeightN},
                             {CFSTR("Height denominator"), &QT_Clap::cleanApertureHeightD},
                             {CFSTR("Horizontal Offset denominator"), &QT_Clap::horizOffD},
                             {CFSTR("Vertical Offset denominator"), &QT_Clap::vertOffD}};
const CFStringRef kHorizontalOffset = CFSTR("Horizontal Offset numerator");
const CFStringRef kVerticalOffset = CFSTR("Vertical Offset numerator");

CFMutableDictionaryRef NewDictionary() {
  return CFDictionaryCreateMutable(kCFAllocatorDefault);
}

template <class Value>
void Add(CFMutableDictionaryRef dictionary, CFStringRef key, CFNumberRef (*create)(Value),
         Value value) {
  const quillmere::Owned<CFNumberRef> number(create(value));
  CFDictionarySetValue(dictionary, key, number.get());
}

/// Puts a new dictionary under a key.
void Put(CFMutableDictionaryRef dictionary, CFStringRef key, CFMutableDictionaryRef made) {
  const quillmere::Owned<CFMutableDictionaryRef> owned(made);
  CFDictionarySetValue(dictionary, key, owned.get());
}

/// Reads a record from the dictionary under a key, if there is one.
template <class Record>
void Get(CFDictionaryRef dictionary, CFStringRef key, void (*read)(CFDictionaryRef, Record*),
         Record* record) {
  const CFDictionaryRef found = quillmere::AsDictionary(CFDictionaryGetValue(dictionary, key));
  if (found != nullptr) read(found, record);
}

}  // namespace

CFMutableDictionaryRef QT_CreateFielIdeExtDict(const QT_Fiel* fiel) {
  CFMutableDictionaryRef dictionary = NewDictionary();
  Add(dictionary, kFields, CF_CreateUInt8Ref, fiel->fields);
  Add(dictionary, kDetail, CF_CreateUInt8Ref, fiel->detail);
  return dictionary;
}

void QT_GetFielIdeExtFromDict(CFDictionaryRef dictionary, QT_Fiel* fiel) {
  CF_GetUInt8FromDict(dictionary, kFields, &fiel->fields);
  CF_GetUInt8FromDict(dictionary, kDetail, &fiel->detail);
}

CFMutableDictionaryRef QT_CreatePaspIdeExtDict(const QT_Pasp* pasp) {
  CFMutableDictionaryRef dictionary = NewDictionary();
  Add(dictionary, kHorizontal, CF_CreateUInt32Ref, pasp->hSpacing);
  Add(dictionary, kVertical, CF_CreateUInt32Ref, pasp->vSpacing);
  return dictionary;
}

void QT_GetPaspIdeExtFromDict(CFDictionaryRef dictionary, QT_Pasp* pasp) {
  CF_GetUInt32FromDict(dictionary, kHorizontal, &pasp->hSpacing);
  CF_GetUInt32FromDict(dictionary, kVertical, &pasp->vSpacing);
}

CFMutableDictionaryRef QT_CreateClapIdeExtDict(const QT_Clap* clap) {
  CFMutableDictionaryRef dictionary = NewDictionary();
  for (const ClapKey& key : kClapKeys)
    Add(dictionary, key.key, CF_CreateUInt32Ref, clap->*key.field);
  CF_AddSInt32ToDict(dictionary, kHorizontalOffset, clap->horizOffN);
  CF_AddSInt32ToDict(dictionary, kVerticalOffset, clap->vertOffN);
  return dictionary;
}

void QT_GetClapIdeExtFromDict(CFDictionaryRef dictionary, QT_Clap* clap) {
  for (const ClapKey& key : kClapKeys)
    CF_GetUInt32FromDict(dictionary, key.key, &(clap->*key.field));
  CF_GetSInt32FromDict(dictionary, kHorizontalOffset, &clap->horizOffN);
  CF_GetSInt32FromDict(dictionary, kVerticalOffset, &clap->vertOffN);
}

CFMutableDictionaryRef QT_CreateNclcDict(const QT_Nclc* nclc) {
  CFMutableDictionaryRef dictionary = NewDictionary();
  Add(dictionary, kPrimaries, CF_CreateUInt16Ref, nclc->primaries);
  Add(dictionary, kTransferFunction, CF_CreateUInt16Ref, nclc->transferFunction);
  Add(dictionary, kMatrix, CF_CreateUInt16Ref, nclc->matrix);
  return dictionary;
}

void QT_GetNclcExtFromDict(CFDictionaryRef dictionary, QT_Nclc* nclc) {
  nclc->colorParamType = kQT_NclcType;
  CF_GetUInt16FromDict(dictionary, kPrimaries, &nclc->primaries);
  CF_GetUInt16FromDict(dictionary, kTransferFunction, &nclc->transferFunction);
  CF_GetUInt16FromDict(dictionary, kMatrix, &nclc->matrix);
}

void QT_AddFielToDict(CFMutableDictionaryRef dictionary, const QT_Fiel* fiel) {
  Put(dictionary, CFSTR("fiel"), QT_CreateFielIdeExtDict(fiel));
}

void QT_AddPaspToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const QT_Pasp* pasp) {
  Put(dictionary, key, QT_CreatePaspIdeExtDict(pasp));
}

void QT_AddClapToDict(CFMutableDictionaryRef dictionary, const QT_Clap* clap) {
  Put(dictionary, CFSTR("clap"), QT_CreateClapIdeExtDict(clap));
}

void QT_AddNclcToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const QT_Nclc* nclc) {
  Put(dictionary, key, QT_CreateNclcDict(nclc));
}

void QT_GetFielFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Fiel* fiel) {
  Get(dictionary, key, QT_GetFielIdeExtFromDict, fiel);
}

void QT_GetPaspFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Pasp* pasp) {
  Get(dictionary, key, QT_GetPaspIdeExtFromDict, pasp);
}

void QT_GetClapFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Clap* clap) {
  Get(dictionary, key, QT_GetClapIdeExtFromDict, clap);
}

void QT_GetNclcFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Nclc* nclc) {
  Get(dictionary, key, QT_GetNclcExtFromDict, nclc);
}
