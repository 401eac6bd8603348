#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "records/dvbpsi.h"
#include "tests/support/lacks_memory.h"
#include "tests/support/sanitizers.h"
#include "tests/synth/output_data_fixture.h"
#include "tests/synth/synthesis_fixture.h"

namespace {

bool refuseSections = false;

/** CA descriptors that can be decoded before one finds no memory; less than 0: none does. */
int caDecodings = -1;

}  // namespace

// The linker sends the program's calls of the generators here.
#define TORNEL_GENERATOR(table, parameters, arguments)                                     \
  extern "C" {                                                                             \
  dvbpsi_psi_section_t* __real_dvbpsi_##table##_sections_generate parameters;              \
  dvbpsi_psi_section_t* __wrap_dvbpsi_##table##_sections_generate parameters {             \
    return refuseSections ? nullptr : __real_dvbpsi_##table##_sections_generate arguments; \
  }                                                                                        \
  }

TORNEL_GENERATOR(pat, (dvbpsi_t * handle, dvbpsi_pat_t* pat, int programs), (handle, pat, programs))
TORNEL_GENERATOR(sdt, (dvbpsi_t * handle, dvbpsi_sdt_t* sdt), (handle, sdt))
TORNEL_GENERATOR(pmt, (dvbpsi_t * handle, dvbpsi_pmt_t* pmt), (handle, pmt))

#undef TORNEL_GENERATOR

extern "C" {
dvbpsi_ca_dr_t* __real_dvbpsi_DecodeCADr(dvbpsi_descriptor_t* descriptor);
dvbpsi_ca_dr_t* __wrap_dvbpsi_DecodeCADr(dvbpsi_descriptor_t* descriptor) {
  return caDecodings-- == 0 ? nullptr : __real_dvbpsi_DecodeCADr(descriptor);
}
}

namespace tevra::test {
namespace {

/** A table synthesised anew while memory runs out. */
template <class Table>
class LackOfMemoryFor : public SynthesisTest<Table> {
 protected:
  LackOfMemoryFor() {
    this->synthesise();
    before_ = this->stored();
    this->input_.identity.outputSID = 1202;
  }
  ~LackOfMemoryFor() override { refuseSections = false; }

  Table before_;
};

using Tables = testing::Types<PAT, SDT, PMT>;
TYPED_TEST_SUITE(LackOfMemoryFor, Tables, );  // the comma: a variadic macro wants an argument

TYPED_TEST(LackOfMemoryFor, ItsSectionsIsRaisedAndMovesNoVersion) {
  refuseSections = true;
  EXPECT_THROW(this->synthesise(), std::bad_alloc);
  EXPECT_EQ(this->stored(), this->before_);
  refuseSections = false;
  EXPECT_EQ(this->synthesise(), 0);
  EXPECT_EQ(this->stored().version, this->before_.version + 1);
}

TYPED_TEST(LackOfMemoryFor, AnythingOfItMovesNoVersion) {
  size_t allowed = 0;
  while (lacksMemory(allowed, [this] { this->synthesise(); })) {
    ASSERT_EQ(this->stored(), this->before_) << allowed;
    ++allowed;
  }
  EXPECT_GT(allowed, 5U);
  EXPECT_EQ(this->stored().version, this->before_.version + 1);
  EXPECT_EQ(this->stored(), this->output());
}

/** Takes what memory there is, down to the last bytes, and keeps the process from getting more. */
void exhaustMemory() {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_AS, &none);
  for (const size_t size : {65536U, 4096U, 512U, 64U, 16U}) {
    for (void* volatile taken = std::malloc(size); taken != nullptr; taken = std::malloc(size)) {
    }
  }
}

/** How a process ends that runs `action` with `bytes` of memory left, in one piece: as waitpid
 * tells it. */
template <class Action>
int statusWith(size_t bytes, Action action) {
  const pid_t child = fork();
  if (child == 0) {
    void* volatile left = std::malloc(bytes);
    exhaustMemory();
    std::free(left);
    try {
      action();
    } catch (const std::bad_alloc&) {
    }
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

TYPED_TEST(LackOfMemoryFor, ItNeverEndsTheProcess) {
  if (kHasForeignMemory) {
    GTEST_SKIP() << "memory cannot be taken away here";
  }
  for (size_t bytes = 0; bytes < size_t{24} * 1024; bytes += 96) {
    ASSERT_EQ(statusWith(bytes, [this] { this->synthesise(); }), 0) << bytes;
  }
}

class LackOfMemory : public OutputDataTest {
 protected:
  LackOfMemory() {
    request_.outputs[1] = describe(50);
    request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  }
  ~LackOfMemory() override { refuseSections = false; }
};

TEST_F(LackOfMemory, AtAnyPointOfARequestChangesNoLaterAnswer) {
  ask();
  const OutputConfigurations undisturbed = answer_;
  StoredTables& store = stores_.tableStore(kInputProgram);
  const TableStore stored = *store;
  size_t allowed = 0;
  for (bool lacking = true; lacking; ++allowed) {
    store = {};
    EXPECT_NO_THROW(lacking = lacksMemory(allowed, [this] { ask(); }));
    ask();
    ASSERT_EQ(answer_, undisturbed) << allowed;
    ASSERT_EQ(*store, stored) << allowed;
  }
  EXPECT_GT(allowed, 50U);
}

TEST_F(LackOfMemory, WhileTablesChangeLeavesNoPacketsOfOthers) {
  ask();
  size_t allowed = 0;
  for (bool lacking = true; lacking; ++allowed) {
    request_.outputs[1].outputSID = 1300;
    EXPECT_NO_THROW(lacking = lacksMemory(allowed, [this] { ask(); }));
    request_.outputs[1].outputSID = 1301;
    for (const char* time : {"made", "kept"}) {
      ask();
      const OutputTables& tables = answer_.at(50).outputTables;
      ASSERT_EQ(decodePat(tables.patPackets), tables.dvbTables.pat) << time << allowed;
      ASSERT_EQ(decodeSdt(tables.sdtPackets), tables.dvbTables.sdt) << time << allowed;
      ASSERT_EQ(decodePmt(tables.pmtPackets, 1301), tables.dvbTables.pmt) << time << allowed;
    }
  }
  EXPECT_GT(allowed, 50U);
}

TEST_F(LackOfMemory, LeavesAnOutputWithoutSectionsOutOfTheAnswer) {
  refuseSections = true;
  ask();
  EXPECT_THAT(answer_, testing::IsEmpty());
  EXPECT_EQ(*stores_.tableStore(kInputProgram), TableStore());
  EXPECT_EQ(fake::timesLogged(3, "inputSID [003401] globalSID [000050] not served: std::bad_alloc"),
            1);
}

TEST_F(LackOfMemory, LeavesAnOutputWithoutAnEcmOrEmmPidOutOfTheAnswer) {
  request_.lastNodeSettings.clear();
  request_.outputs[1].nextNode = 1;
  storeCat({kEmmIn});
  for (const int decodings : {0, 1, 2}) {  // of the programme, of the video and of the CAT
    caDecodings = decodings;
    ask();
    EXPECT_THAT(answer_, testing::IsEmpty()) << decodings;
  }
  ask();
  EXPECT_EQ(answer_.at(50).pidItems.size(), 7U);
}

}  // namespace
}  // namespace tevra::test
