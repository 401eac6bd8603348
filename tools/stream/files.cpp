#include "tools/stream/files.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

std::FILE* open(const std::string& path, const char* mode, std::FILE* standard) {
  std::FILE* file = path == "-" ? standard : std::fopen(path.c_str(), mode);
  if (file == nullptr) {
    throw ToolError("cannot open " + path + ": " + std::strerror(errno));
  }
  return file;
}

}  // namespace

void FileCloser::operator()(std::FILE* file) const {
  if (file != stdin && file != stdout) {
    std::fclose(file);
  }
}

InputFile::InputFile(const std::string& path) : path_(path), file_(open(path, "rb", stdin)) {}

size_t InputFile::read(uint8_t* buffer, size_t size) {
  const size_t count = std::fread(buffer, 1, size, file_.get());
  if (count == 0 && std::ferror(file_.get()) != 0) {
    throw ToolError("cannot read " + path_ + ": " + std::strerror(errno));
  }
  return count;
}

std::optional<uint64_t> InputFile::size() const {
  struct stat status {};
  if (fstat(fileno(file_.get()), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return static_cast<uint64_t>(status.st_size);
}

bool InputFile::rewind() {
  return std::fseek(file_.get(), 0, SEEK_SET) == 0;
}

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool isReadOnce(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

void requireWritable(const std::string& path) {
  const std::filesystem::path file(path);
  const std::string folder = file.has_parent_path() ? file.parent_path().string() : ".";
  std::error_code ignored;
  std::string problem;
  if (path == "-") {
    return;
  }
  if (path.empty()) {
    throw ToolError("cannot write the output: no file is named");
  }
  if (std::filesystem::is_directory(file, ignored)) {
    problem = "it is a directory; name a file in it";
  } else if (std::filesystem::exists(file, ignored)) {
    problem = access(path.c_str(), W_OK) == 0 ? "" : std::strerror(errno);
  } else if (!std::filesystem::is_directory(folder, ignored)) {
    problem = "there is no directory " + folder + "; make it first";
  } else if (access(folder.c_str(), W_OK | X_OK) != 0) {
    problem = folder + ": " + std::strerror(errno);
  }
  if (!problem.empty()) {
    throw ToolError("cannot write " + path + ": " + problem);
  }
}

OutputFile::OutputFile(const std::string& path) : path_(path), file_(open(path, "wb", stdout)) {}

void OutputFile::write(const uint8_t* bytes, size_t size) {
  if (std::fwrite(bytes, 1, size, file_.get()) != size) {
    fail();
  }
}

void OutputFile::close() {
  if (std::fflush(file_.get()) != 0) {
    fail();
  }
}

void OutputFile::fail() const {
  throw ToolError("cannot write " + path_ + ": " + std::strerror(errno));
}

void replaceFile(const std::string& path, const std::string& text) {
  std::error_code ignored;
  const std::filesystem::path linked = std::filesystem::canonical(path, ignored);
  const std::string target = linked.empty() ? path : linked.string();
  const bool isReplaced = linked.empty() || std::filesystem::is_regular_file(linked, ignored);
  const std::string written = isReplaced ? target + "." + std::to_string(getpid()) : target;
  try {
    OutputFile file(written);
    file.write(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    file.close();
    if (isReplaced && std::rename(written.c_str(), target.c_str()) != 0) {
      throw ToolError("cannot replace " + path + ": " + std::strerror(errno));
    }
  } catch (const ToolError&) {
    if (isReplaced) {
      (void)std::remove(written.c_str());
    }
    throw;
  }
}

}  // namespace tevra::tools
