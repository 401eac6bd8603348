#include "store/kept_entry.h"

#include <memory>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "records/records.h"

namespace tevra {

bool KeptText::isMade() const {
  return !text_.empty();
}

template <class Record>
std::string entryText(const Record& record) {
  const auto memory = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  apache::thrift::protocol::TJSONProtocol protocol(memory);
  record.write(&protocol);
  return memory->getBufferAsString();
}

template std::string entryText(const TableStore&);
template std::string entryText(const EITTableVersionStore&);

}  // namespace tevra
