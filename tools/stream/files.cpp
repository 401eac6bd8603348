#include "tools/stream/files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "tools/text/standard_streams.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path) {
  throw ToolError("cannot " + what + " " + path + ": " + std::strerror(errno));
}

/** Without waiting for a writer, so that the wait can be ended. */
int openForReading(const std::string& path) {
  const int descriptor =
      path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) {
    fail("open", path);
  }
  return descriptor;
}

std::FILE* openForWriting(const std::string& path) {
  std::FILE* file = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
  if (file == nullptr) {
    fail("open", path);
  }
  return file;
}

/** With the rights that opening a file asks for. */
bool mayUse(const std::string& path, int mode) {
  return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

/** Where `file` has its name, or would. */
std::string folderOf(const std::filesystem::path& file) {
  return file.has_parent_path() ? file.parent_path().string() : ".";
}

bool takesFiles(const std::string& folder) {
  return mayUse(folder, W_OK | X_OK);
}

/** Of which file another takes the place; nothing where it is written where it lies. */
std::optional<std::string> placeOf(const std::string& path) {
  std::error_code ignored;
  if (path == "-") {
    return std::nullopt;
  }
  if (!std::filesystem::exists(path, ignored)) {
    return path;
  }
  const std::filesystem::path linked = std::filesystem::canonical(path, ignored);
  // What a link under /proc leads to may have no name, as a pipe has none.
  const bool isReplaced =
      std::filesystem::is_regular_file(linked, ignored) && takesFiles(folderOf(linked));
  return isReplaced ? std::optional(linked.string()) : std::nullopt;
}

}  // namespace

void FileCloser::operator()(std::FILE* file) const {
  if (file != stdout) {
    std::fclose(file);
  }
}

InputFile::InputFile(std::string path, LiveOptions live)
    : path_(std::move(path)), live_(std::move(live)), descriptor_(openForReading(path_)) {}

InputFile::~InputFile() {
  if (path_ != "-") {
    close(descriptor_);
  }
}

size_t InputFile::read(uint8_t* buffer, size_t size) {
  ssize_t count = 0;
  const bool comes = waitFor(live_, [&](std::chrono::milliseconds most) {
    pollfd file = {descriptor_, POLLIN, 0};
    if (poll(&file, 1, static_cast<int>(most.count())) <= 0) {
      return false;
    }
    count = ::read(descriptor_, buffer, size);
    return count >= 0 || (errno != EAGAIN && errno != EINTR);  // taken away meanwhile
  });
  if (count < 0 && comes) {
    fail("read", sourceName(path_));
  }
  return comes ? static_cast<size_t>(count) : 0;
}

std::optional<uint64_t> InputFile::size() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return static_cast<uint64_t>(status.st_size);
}

bool InputFile::rewind() {
  return lseek(descriptor_, 0, SEEK_SET) == 0;
}

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void requireWritable(const std::string& path) {
  const std::filesystem::path file(path);
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
    problem = mayUse(path, W_OK) ? "" : std::strerror(errno);
  } else if (!std::filesystem::is_directory(folderOf(file), ignored)) {
    problem = "there is no directory " + folderOf(file) + "; make it first";
  } else if (!takesFiles(folderOf(file))) {
    problem = folderOf(file) + ": " + std::strerror(errno);
  }
  if (!problem.empty()) {
    throw ToolError("cannot write " + path + ": " + problem);
  }
}

OutputFile::OutputFile(const std::string& path) : path_(path), file_(openForWriting(path)) {}

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
  tools::fail("write", sinkName(path_));
}

void replaceFile(const std::string& path, const std::string& text) {
  const std::optional<std::string> place = placeOf(path);
  const std::string written = place ? *place + "." + std::to_string(getpid()) : path;
  try {
    OutputFile file(written);
    file.write(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    file.close();
    if (place && std::rename(written.c_str(), place->c_str()) != 0) {
      throw ToolError("cannot replace " + path + ": " + std::strerror(errno));
    }
  } catch (const ToolError&) {
    if (place) {
      (void)std::remove(written.c_str());
    }
    throw;
  }
}

}  // namespace tevra::tools
