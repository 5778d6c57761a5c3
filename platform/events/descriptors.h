/// Descriptors: typed bytes, lists and records of descriptors, and events, which are records with
/// attributes.
///
/// A descriptor owns its data; dispose of each one that a call has filled. Data is in native byte
/// order. A call that fails leaves the descriptor it should have filled as it was. Descriptors are
/// not locked: one thread at a time uses one descriptor.
///
/// Statuses: paramErr for a null argument or a negative size, errAEDescNotFound for an item,
/// keyword or attribute that is not there, errAEWrongDataType for a list or record operation on
/// another descriptor and for the bytes of one that has none, errAECoercionFail for a value that
/// cannot be had as the type asked for.
#pragma once

#include <utility>

#include "base_types.h"

struct DescriptorData;

struct AEDesc {
  OSType descriptorType;
  DescriptorData* dataHandle;
};
using AEDescList = AEDesc;
using AERecord = AEDesc;
using AppleEvent = AEDesc;
using AEKeyword = OSType;

inline constexpr OSType typeNull = "null"_4cc;
inline constexpr OSType typeWildCard = "****"_4cc;  ///< to ask for: whatever type there is
inline constexpr OSType typeAEList = "list"_4cc;
inline constexpr OSType typeAERecord = "reco"_4cc;
inline constexpr OSType typeAppleEvent = "aevt"_4cc;
inline constexpr OSType typeSInt16 = "shor"_4cc;
inline constexpr OSType typeSInt32 = "long"_4cc;
inline constexpr OSType typeUInt32 = "magn"_4cc;
inline constexpr OSType typeSInt64 = "comp"_4cc;
inline constexpr OSType typeIEEE32BitFloatingPoint = "sing"_4cc;
inline constexpr OSType typeIEEE64BitFloatingPoint = "doub"_4cc;
inline constexpr OSType typeBoolean = "bool"_4cc;  ///< one byte
inline constexpr OSType typeTrue = "true"_4cc;     ///< no data
inline constexpr OSType typeFalse = "fals"_4cc;    ///< no data
inline constexpr OSType typeType = "type"_4cc;     ///< a four-character code
inline constexpr OSType typeEnumerated = "enum"_4cc;
inline constexpr OSType typeAlias = "alis"_4cc;  ///< an alias record
inline constexpr OSType typeFSRef = "fsrf"_4cc;
inline constexpr OSType typeFileURL = "furl"_4cc;
inline constexpr OSType typeProcessSerialNumber = "psn "_4cc;
inline constexpr OSType typeScript = "scpt"_4cc;

inline constexpr AEKeyword keyDirectObject = "----"_4cc;
inline constexpr AEKeyword keyErrorNumber = "errn"_4cc;
inline constexpr AEKeyword keyErrorString = "errs"_4cc;
inline constexpr AEKeyword keyAddressAttr = "addr"_4cc;
inline constexpr AEKeyword keyEventClassAttr = "evcl"_4cc;
inline constexpr AEKeyword keyEventIDAttr = "evid"_4cc;
inline constexpr AEKeyword keyReturnIDAttr = "rtid"_4cc;
inline constexpr AEKeyword keyTransactionIDAttr = "tran"_4cc;

inline constexpr SInt16 kAutoGenerateReturnID = -1;
inline constexpr SInt32 kAnyTransactionID = 0;

inline constexpr OSErr errAECoercionFail = -1700;
inline constexpr OSErr errAEDescNotFound = -1701;
inline constexpr OSErr errAEWrongDataType = -1703;
inline constexpr OSErr errAEEventNotHandled = -1708;
inline constexpr OSErr errAETimeout = -1712;

/// Makes a descriptor of `size` bytes at `data`.
OSErr AECreateDesc(OSType type, const void* data, Size size, AEDesc* descriptor);
/// Makes it a null descriptor without looking at what it was; a null pointer is allowed.
void AEInitializeDesc(AEDesc* descriptor);
/// Frees the data and makes it a null descriptor; a null pointer is allowed.
OSErr AEDisposeDesc(AEDesc* descriptor);
/// A deep copy.
OSErr AEDuplicateDesc(const AEDesc* from, AEDesc* to);
/// A new descriptor of another type. Each type goes to itself and to the wildcard. Beyond that the
/// handlers installed with AEInstallCoercionHandler are asked first, then:
/// - numbers and Booleans into each other, where the value fits (reals are rounded to whole
/// numbers);
///   into text in decimal or as "true" and "false", and from text that holds just a number;
/// - the forms of text (text_coercions.h) into each other;
/// - `furl` (a path in UTF-8, or a file: URL), `fsrf` and `alis` into each other;
/// - `type` and `enum` into each other;
/// - a record into any other kind of record, or into the list of its values;
/// - a list of one item into what that item goes to, and anything else into a list of one item.
OSErr AECoerceDesc(const AEDesc* from, OSType type, AEDesc* to);
/// Copies at most `capacity` bytes of the data.
OSErr AEGetDescData(const AEDesc* descriptor, void* data, Size capacity);
/// The size of the data in bytes; 0 for lists, records and null.
Size AEGetDescDataSize(const AEDesc* descriptor);

/// Converts `from` to `type`, or gives errAECoercionFail.
using AECoerceDescUPP = OSErr (*)(const AEDesc* from, OSType type, SInt64 refcon, AEDesc* to);
/// Installs a coercion for the process in place of any other between the two types. The handler
/// takes descriptors: paramErr if `from_type_is_desc` or `handler` is null, or if `is_system` is
/// not.
OSErr AEInstallCoercionHandler(OSType from, OSType to, AECoerceDescUPP handler, SInt64 refcon,
                               Boolean from_type_is_desc, Boolean is_system);

/// Makes an empty list, or an empty record.
OSErr AECreateList(AEDescList* list, Boolean is_record = false);
/// The number of a list's items, or of a record's or event's parameters.
OSErr AECountItems(const AEDescList* list, SInt32* count);
/// Sets item `index` from 1, or appends for 0 or one past the end.
OSErr AEPutPtr(AEDescList* list, SInt32 index, OSType type, const void* data, Size size);
/// The same with a copy of a descriptor.
OSErr AEPutDesc(AEDescList* list, SInt32 index, const AEDesc* descriptor);
/// Copies item `index` from 1, coerced to `type`, to `data`. `keyword` (0 for an item of a list),
/// `actual_type` and `actual_size` may be null.
OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, OSType type, AEKeyword* keyword,
                  OSType* actual_type, void* data, Size capacity, Size* actual_size);
/// A copy of item `index` from 1, coerced to `type`. `keyword` may be null.
OSErr AEGetNthDesc(const AEDescList* list, SInt32 index, OSType type, AEKeyword* keyword,
                   AEDesc* descriptor);

/// Whether it is a record of any type, events included.
Boolean AECheckIsRecord(const AEDesc* descriptor);
/// Parameters of a record or event, by keyword. Putting replaces one that is there; `actual_type`
/// and `actual_size` may be null.
OSErr AEPutParamPtr(AERecord* record, AEKeyword keyword, OSType type, const void* data, Size size);
OSErr AEPutParamDesc(AERecord* record, AEKeyword keyword, const AEDesc* descriptor);
OSErr AEGetParamPtr(const AERecord* record, AEKeyword keyword, OSType type, OSType* actual_type,
                    void* data, Size capacity, Size* actual_size);
OSErr AEGetParamDesc(const AERecord* record, AEKeyword keyword, OSType type, AEDesc* descriptor);
OSErr AESizeOfParam(const AERecord* record, AEKeyword keyword, OSType* type, Size* size);

/// An event of a class and ID with the attributes `evcl` and `evid`, `addr` (a copy of `target`),
/// `rtid` and `tran`. kAutoGenerateReturnID gives a number of its own. `target` may be null.
OSErr AECreateAppleEvent(OSType event_class, OSType event_id, const AEDesc* target,
                         SInt16 return_id, SInt32 transaction_id, AppleEvent* event);
/// Attributes of an event, like its parameters.
OSErr AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, OSType type, const void* data,
                        Size size);
OSErr AEPutAttributeDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* descriptor);
OSErr AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, OSType type,
                        OSType* actual_type, void* data, Size capacity, Size* actual_size);
OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword keyword, OSType type,
                         AEDesc* descriptor);

namespace quillmere {

/// Owns a descriptor and disposes of it at the end of the scope.
class OwnedDescriptor {
 public:
  OwnedDescriptor() = default;
  OwnedDescriptor(OwnedDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, {typeNull, nullptr})) {}
  OwnedDescriptor(const OwnedDescriptor&) = delete;
  OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;
  ~OwnedDescriptor() { AEDisposeDesc(&descriptor_); }

  const AEDesc* get() const { return &descriptor_; }
  AEDesc* get() { return &descriptor_; }
  /// Hands the descriptor to the caller.
  [[nodiscard]] AEDesc release() { return std::exchange(descriptor_, AEDesc{typeNull, nullptr}); }

 private:
  AEDesc descriptor_ = {typeNull, nullptr};
};

}  // namespace quillmere
