#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "records/records.h"
#include "synth/service_work_record.h"
#include "tests/support/tables.h"

/** Short ways to write what the synthesis reads. */
namespace tevra::test {

inline constexpr int32_t kInputProgram = 3401;
inline constexpr int32_t kPmtPid = 0x0065;

/** ISO_639_language_descriptor (ISO/IEC 13818-1, 2.6.18), every entry of audio type 0. */
inline Descriptor makeLanguageDescriptor(std::initializer_list<std::string> codes) {
  std::string payload;
  for (const std::string& code : codes) {
    payload += code + '\0';
  }
  return makeDescriptor(0x0A, payload);
}

/** service_descriptor (EN 300 468, 6.2.33) without names. */
inline Descriptor makeServiceDescriptor(uint8_t serviceType) {
  return makeDescriptor(0x48, std::string{static_cast<char>(serviceType), '\0', '\0'});
}

/** A private descriptor that takes `size` bytes of its loop, 2 to 257. */
inline Descriptor makeFiller(size_t size) {
  std::string payload(size - 2, '\0');
  for (size_t i = 0; i < payload.size(); ++i) {
    payload[i] = static_cast<char>(i + size);
  }
  return makeDescriptor(0xA0, payload);
}

/** Fillers that take `size` bytes together; anything but 1. All but the last are as long as they
 * can be, unless that would leave 1 byte. */
inline std::vector<Descriptor> makeFillers(size_t size) {
  constexpr size_t kLargest = 257;
  std::vector<Descriptor> fillers;
  while (size > kLargest) {
    const size_t part = size == kLargest + 1 ? kLargest - 1 : kLargest;
    fillers.push_back(makeFiller(part));
    size -= part;
  }
  if (size > 0) {
    fillers.push_back(makeFiller(size));
  }
  return fillers;
}

inline std::vector<AudioLanguage> makeLanguages(std::initializer_list<std::string> codes) {
  std::vector<AudioLanguage> languages;
  for (const std::string& code : codes) {
    languages.emplace_back().language = code;
  }
  return languages;
}

/** The codes of a language list, in order. */
inline std::vector<std::string> codesOf(const std::vector<AudioLanguage>& languages) {
  std::vector<std::string> codes;
  for (const AudioLanguage& language : languages) {
    codes.push_back(language.language);
  }
  return codes;
}

inline LastNodeSettings makeLastNode(int32_t globalSID, int32_t uniqueSID) {
  LastNodeSettings settings;
  settings.globalSID = globalSID;
  settings.uniqueSID = uniqueSID;
  return settings;
}

inline LastNodeSettings makeFilter(bool audioFilter, std::initializer_list<std::string> codes) {
  LastNodeSettings settings;
  settings.audioFilter = audioFilter ? 1 : 0;
  settings.audioLanguages = makeLanguages(codes);
  return settings;
}

/** Programme 3401, a television service, on PID 0x65. */
inline ServiceTables makeServiceTables() {
  ServiceTables service;
  service.inputSID = kInputProgram;
  service.pat = makePat(1001, {{kInputProgram, kPmtPid}});
  service.pat.currentNext = true;
  service.sdt = makeSdt({makeService(kInputProgram, {makeServiceDescriptor(0x19)})});
  return service;
}

/**
 * Programme 3401 with video on PID 0x66 (the PCR too) and Spanish audio on 0x67, on its way to
 * output service 1201 of transport stream 7 in network 8.
 */
inline ServiceWorkRecord makeWorkRecord(const ServiceTables& service) {
  ServiceWorkRecord work(service);
  work.pmt =
      makePmt(kInputProgram, 0x66,
              {makeStream(0x1B, 0x66), makeStream(4, 0x67, {makeLanguageDescriptor({"spa"})})});
  work.pmt.currentNext = true;
  work.identity.outputSID = 1201;
  work.identity.serviceName = "Uno HD";
  work.identity.transportStreamId = 7;
  work.identity.originalNetworkId = 8;
  return work;
}

}  // namespace tevra::test
