#include "tests/system/disk_faults.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <tuple>

// What lies in place of the daemon's files and directories, and how it gets over it.

namespace tevra::test {
namespace {

namespace fs = std::filesystem;

using testing::Combine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Values;
using testing::ValuesIn;

void makeFifo(const std::string& path) {
  if (mkfifo(path.c_str(), 0600) != 0) {
    throw std::runtime_error("cannot make a FIFO at " + path);
  }
}

void makeSocket(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool bound =
      bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(socket);
  if (!bound) {
    throw std::runtime_error("cannot make a socket at " + path);
  }
}

void makeDirectory(const std::string& path) {
  fs::create_directory(path);
}

void linkTo(const char* target, const std::string& path) {
  fs::create_symlink(target, path);
}

/** Something that can be neither read nor written as one of the files. */
struct Obstacle {
  const char* name;
  void (*put)(const std::string& path);
};

void PrintTo(const Obstacle& obstacle, std::ostream* out) {
  *out << obstacle.name;
}

const Obstacle kObstacles[] = {
    {"Fifo", makeFifo},
    {"Socket", makeSocket},
    {"Directory", makeDirectory},
    {"FullDevice", [](const std::string& path) { linkTo("/dev/full", path); }},
    {"LinkIntoNowhere", [](const std::string& path) { linkTo("no/such/file", path); }},
    {"LinkToItself",
     [](const std::string& path) { linkTo(fs::path(path).filename().c_str(), path); }},
};

class InPlaceOfOneFile : public DiskFaults,
                         public testing::WithParamInterface<std::tuple<StoreFile, Obstacle>> {};

TEST_P(InPlaceOfOneFile, CostsThatFileUntilItIsGone) {
  const auto& [file, obstacle] = GetParam();
  writeGoodFiles();
  fs::remove(pathOf(file));
  obstacle.put(pathOf(file));
  start();
  EXPECT_THAT(errors(), ElementsAreArray(loadErrors(file)));
  EXPECT_EQ(serve(), expectedWithout(file, 1));
  EXPECT_THAT(roundErrors_, ElementsAreArray(saveErrors(file)));
  fs::remove(pathOf(file));
  expectGoodRound(expectedWithout(file, 2));
  start();
  EXPECT_THAT(errors(), IsEmpty());
  EXPECT_EQ(serve(), expectedWithout(file, 3));
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, InPlaceOfOneFile,
                         Combine(ValuesIn(kStoreFiles), ValuesIn(kObstacles)),
                         [](const auto& test) {
                           return std::string(nameOf(std::get<0>(test.param))) +
                                  std::get<1>(test.param).name;
                         });

using DaemonFiles = DiskFaults;

TEST_F(DaemonFiles, AreContinuedWhenTheyAreGood) {
  writeGoodFiles();
  start();
  EXPECT_THAT(errors(), IsEmpty());
  expectGoodRound(expectedAfter({}, 1));
}

/** A pipe that somebody else holds open and neither reads nor writes. */
class HeldFifo {
 public:
  explicit HeldFifo(const std::string& path) {
    makeFifo(path);
    fd_ = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  }
  ~HeldFifo() { close(fd_); }
  HeldFifo(const HeldFifo&) = delete;
  HeldFifo& operator=(const HeldFifo&) = delete;

  void fill() const {
    const std::string block(4096, '[');
    while (write(fd_, block.data(), block.size()) > 0) {
    }
  }

 private:
  int fd_ = -1;
};

class InPlaceOfOneFileAPipe : public DiskFaults, public testing::WithParamInterface<StoreFile> {};

TEST_P(InPlaceOfOneFileAPipe, ThatIsFullHoldsUpNothing) {
  const StoreFile file = GetParam();
  writeGoodFiles();
  fs::remove(pathOf(file));
  const HeldFifo pipe(pathOf(file));
  start();  // finds no bytes, but somebody who could write some
  EXPECT_THAT(errors(), ElementsAreArray(loadErrors(file)));
  pipe.fill();
  EXPECT_EQ(serve(), expectedWithout(file, 1));
  EXPECT_THAT(roundErrors_, ElementsAreArray(saveErrors(file)));
  start();  // finds what is no record
  EXPECT_THAT(errors(), ElementsAreArray(loadErrors(file)));
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, InPlaceOfOneFileAPipe, ValuesIn(kStoreFiles),
                         [](const auto& test) { return std::string(nameOf(test.param)); });

/** Something in place of a directory. */
const Obstacle kNoDirectories[] = {
    {"File", [](const std::string& path) { writeText(path, "in the way"); }},
    {"Fifo", makeFifo},
    {"LinkIntoNowhere", [](const std::string& path) { linkTo("no/such/directory", path); }},
    {"LinkToItself",
     [](const std::string& path) { linkTo(fs::path(path).filename().c_str(), path); }},
};

class InPlaceOfADirectory : public DiskFaults, public testing::WithParamInterface<Obstacle> {
 protected:
  [[nodiscard]] Lines bothUnreadable() const {
    return together({loadErrors(kTables), loadErrors(kVersions)});
  }
};

TEST_P(InPlaceOfADirectory, WithinTheRootCostsTheTwoFilesInItUntilItIsGone) {
  writeGoodFiles();
  fs::remove_all(directory_);
  GetParam().put(directory_);
  start();
  EXPECT_THAT(errors(), ElementsAreArray(bothUnreadable()));
  EXPECT_EQ(serve(), expectedAfter({false, true, true}, 1));
  EXPECT_THAT(roundErrors_, ElementsAreArray(noDirectoryErrors()));
  fs::remove(directory_);
  expectGoodRound(expectedAfter({false, true, true}, 2));
}

TEST_P(InPlaceOfADirectory, AsTheRootCostsAllFilesUntilItIsGone) {
  GetParam().put(root_);
  start();
  EXPECT_THAT(errors(), ElementsAreArray(bothUnreadable()));
  EXPECT_EQ(serve(), expectedAfter({true, true, true}, 1));
  EXPECT_EQ(roundErrors_, together({saveErrors(kPids), noDirectoryErrors()}));
  fs::remove(root_);
  // The root is made with the tables, so that the PIDs are too early this once.
  EXPECT_EQ(serve(), expectedAfter({true, true, true}, 2));
  EXPECT_THAT(roundErrors_, ElementsAre(kPidsNotSaved));
  expectGoodRound(expectedAfter({true, true, true}, 3));
  start();
  EXPECT_THAT(errors(), IsEmpty());
  EXPECT_EQ(serve(), expectedAfter({true, true, true}, 4));
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, InPlaceOfADirectory, ValuesIn(kNoDirectories),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(DaemonFiles, MayVanishWithTheRootBetweenTwoSaves) {
  writeGoodFiles();
  start();
  EXPECT_EQ(serve(), expectedAfter({}, 1));
  fs::remove_all(root_);
  EXPECT_EQ(serve(), expectedAfter({}, 2));
  EXPECT_THAT(roundErrors_, ElementsAre(kPidsNotSaved));
  expectGoodRound(expectedAfter({}, 3));
}

}  // namespace
}  // namespace tevra::test
