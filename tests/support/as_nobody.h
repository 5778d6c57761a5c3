/// Acts as a user without special rights, for tests of permissions.
#pragma once

#include <unistd.h>

#include <exception>
#include <filesystem>

namespace quillmere::test {

/// While it lives a superuser's process has the rights of the user "nobody", to whom `folder` is
/// given; any other process stays as it is.
class AsNobody {
 public:
  explicit AsNobody(const std::filesystem::path& folder) : is_root_(geteuid() == 0) {
    constexpr uid_t kNobody = 65534;
    if (!is_root_) return;
    is_root_ = chown(folder.c_str(), kNobody, kNobody) == 0 && seteuid(kNobody) == 0;
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;
  ~AsNobody() {
    if (is_root_ && seteuid(0) != 0) std::terminate();
  }

 private:
  bool is_root_;
};

}  // namespace quillmere::test
