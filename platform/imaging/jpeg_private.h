/// What reading and writing JPEG share: libjpeg's errors without a message or an exit.
#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

#include <jerror.h>

namespace quillmere::imaging {

/// libjpeg reports an error by a jump out of the failing call. The jump must not pass over objects
/// with destructors, so every call of libjpeg goes through Try, with nothing else in the callable.
struct JpegErrors {
  jpeg_error_mgr manager{};  // first: libjpeg hands its address back
  std::jmp_buf jump{};
  char first_warning[JMSG_LENGTH_MAX] = {};

  JpegErrors() {
    jpeg_std_error(&manager);
    manager.error_exit = [](j_common_ptr common) {
      std::longjmp(reinterpret_cast<JpegErrors*>(common->err)->jump, 1);
    };
    manager.output_message = [](j_common_ptr) {};
    // Level -1 is a warning: the data is damaged and libjpeg goes on.
    manager.emit_message = [](j_common_ptr common, int level) {
      if (level >= 0) return;
      if (common->err->num_warnings++ == 0) {
        common->err->format_message(common,
                                    reinterpret_cast<JpegErrors*>(common->err)->first_warning);
      }
    };
  }

  /// Runs `call`; false when libjpeg gave up in it.
  template <class Call>
  [[nodiscard]] bool Try(const Call& call) {
    if (setjmp(jump) != 0) return false;
    call();
    return true;
  }
};

}  // namespace quillmere::imaging
