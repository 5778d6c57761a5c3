#include "QT_Error_Keys.h"

#include "error_keys.h"

namespace {

constexpr quillmere::errors::KeyRange kKeys[] = {
    {11001, 11001, "QT LowVersionErr"},
    {11002, 11002, "QT NoControllerOpenedErr"},
    {11003, 11003, "QT ComponentDidntHandleRequestErr"},
    {11004, 11004, "QT NoComponentFoundErr"},
    {11005, 11005, "QT DataRefIndexNotInMediaErr"},
    {11006, 11006, "QT CouldNotOpenMovieFileErr"},
    {11007, 11007, "QT CouldNotGetAllMovieFileReferencesErr"},
    {11008, 11009, "QT CouldNotDeleteMovieFileErr"},
    {11010, 11010, "QT DataRefNotFileErr"},
    {11011, 11011, "QT NoVideoTrackErr"},
    {11013, 11013, "QT UnknownTimeScaleErr"},
    {11015, 11015, "QT MdatHeaderErr"},
    {11017, 11019, "QT AtomErr"},
    {11027, 11029, "QT LibErr"},
};

}  // namespace

void QT_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kKeys, code, outKey);
}
