#include "catalogue_record.h"

#include <sys/xattr.h>

#include <cerrno>
#include <span>

#include "file_calls.h"
#include "file_references.h"

namespace quillmere::files {

const char kCatalogueAttribute[] = "user.quillmere.catalogue";

namespace {

constexpr std::size_t kSize = 44;
constexpr UInt64 kVersion = 1;
using Form = std::array<UInt8, kSize>;

UInt64 Get(const Form& form, std::size_t at, std::size_t size) {
  UInt64 value = 0;
  for (std::size_t i = 0; i < size; ++i)
    value = (value << 8) | form[at + i];
  return value;
}

void Put(UInt64 value, std::size_t at, std::size_t size, Form* form) {
  for (std::size_t i = size; i > 0; --i, value >>= 8)
    (*form)[at + i - 1] = static_cast<UInt8>(value);
}

UTCDateTime DateAt(const Form& form, std::size_t at) {
  return {static_cast<UInt16>(Get(form, at, 2)), static_cast<UInt32>(Get(form, at + 2, 4)),
          static_cast<UInt16>(Get(form, at + 6, 2))};
}

void PutDate(const UTCDateTime& date, std::size_t at, Form* form) {
  Put(date.highSeconds, at, 2, form);
  Put(date.lowSeconds, at + 2, 4, form);
  Put(date.fraction, at + 6, 2, form);
}

}  // namespace

CatalogueRecord ReadCatalogueRecord(const std::string& attribute_path) {
  Form form{};
  const ssize_t size =
      lgetxattr(attribute_path.c_str(), kCatalogueAttribute, form.data(), form.size());
  if (size != static_cast<ssize_t>(kSize) || Get(form, 0, 2) != kVersion) return {};
  return {static_cast<UInt16>(Get(form, 2, 2)),
          static_cast<UInt32>(Get(form, 4, 4)),
          DateAt(form, 8),
          DateAt(form, 16),
          DateAt(form, 24),
          DateAt(form, 32)};
}

OSStatus WriteCatalogueRecord(const std::string& attribute_path, const CatalogueRecord& record) {
  Form form{};
  Put(kVersion, 0, 2, &form);
  Put(record.write_permissions, 2, 2, &form);
  Put(record.text_encoding, 4, 4, &form);
  PutDate(record.create_date, 8, &form);
  PutDate(record.attribute_date, 16, &form);
  PutDate(record.attribute_date_set, 24, &form);
  PutDate(record.backup_date, 32, &form);
  const bool is_default = record == CatalogueRecord{};
  const int result = SetAttribute(attribute_path, kCatalogueAttribute,
                                  is_default ? std::span<const UInt8>() : std::span(form));
  return result == 0 || errno == EOPNOTSUPP ? OSStatus{noErr} : StatusOfErrno(errno);
}

}  // namespace quillmere::files
