#include "app/program_files.h"

#include <system_error>

namespace orvanta {

std::filesystem::path besideProgram(std::string_view name) {
  std::error_code ignored;
  return std::filesystem::read_symlink("/proc/self/exe", ignored).replace_filename(name);
}

}  // namespace orvanta
