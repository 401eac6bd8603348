/** Settings of an output single-programme transport stream. */
namespace * tevra.thrift.spts

struct AudioLanguage {
  1: string language  // ISO 639-2 code, compared byte for byte
}

struct LastNodeSettings {
  1: i32 globalSID
  2: i32 uniqueSID
  3: i32 audioFilter  // nonzero: of the audio streams only those in audioLanguages are kept
  4: list<AudioLanguage> audioLanguages
  5: string lastNodeName
  6: i32 lastNodeParam1
  7: i32 lastNodeParam2
}
