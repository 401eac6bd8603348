#include "tools/descriptors/descriptor_fields.h"

#include "tools/descriptors/descriptor_names.h"
#include "tools/descriptors/descriptor_syntax.h"

namespace tevra::tools {
namespace {

constexpr int kRegistrationTag = 0x05;
constexpr int kPrivateDataSpecifierTag = 0x5F;
constexpr int kFirstUserDefinedTag = 0x80;
constexpr size_t kIdentifierSize = 4;

/** The 32-bit identifier that a payload starts with. */
std::optional<uint32_t> leadingIdentifier(const std::string& payload) {
  if (payload.size() < kIdentifierSize) {
    return std::nullopt;
  }
  FieldReader in(payload);
  return static_cast<uint32_t>(in.bits(32));
}

DescriptorSyntax standardSyntax(int tag) {
  for (const auto& syntaxOf :
       {&mpegSyntax, &serviceSyntax, &deliverySyntax, &eventSyntax, &streamSyntax}) {
    if (const DescriptorSyntax syntax = syntaxOf(tag); syntax != nullptr) {
      return syntax;
    }
  }
  return nullptr;
}

void decode(DescriptorFields& descriptor, DescriptorSyntax syntax) {
  FieldReader in(descriptor.payload);
  syntax(in);
  in.rest("trailingBytes");
  descriptor.problem = in.problem();
  descriptor.isDecoded = !in.hasFailed();
  if (descriptor.isDecoded) {
    descriptor.fields = in.takeFields();
  }
}

DescriptorFields describeOne(const Descriptor& descriptor, const PrivateScope& scope) {
  DescriptorFields described;
  described.tag = descriptor.tag;
  described.name = descriptorName(descriptor.tag);
  described.payload = descriptor.data;
  DescriptorSyntax syntax = standardSyntax(descriptor.tag);
  if (descriptor.tag >= kFirstUserDefinedTag) {
    if (const auto owned = privateSyntax(descriptor.tag, scope)) {
      described.name = owned->name;
      syntax = owned->syntax;
    }
  }
  if (syntax != nullptr) {
    decode(described, syntax);
  }
  return described;
}

}  // namespace

std::set<uint32_t> registeredFormats(const std::vector<Descriptor>& descriptors) {
  std::set<uint32_t> formats;
  for (const Descriptor& descriptor : descriptors) {
    const auto format = leadingIdentifier(descriptor.data);
    if (descriptor.tag == kRegistrationTag && format) {
      formats.insert(*format);
    }
  }
  return formats;
}

DescriptorLoop describe(const std::vector<Descriptor>& descriptors,
                        const std::set<uint32_t>& registrations) {
  PrivateScope scope;
  scope.registrations = registeredFormats(descriptors);
  scope.registrations.insert(registrations.begin(), registrations.end());
  DescriptorLoop loop;
  for (const Descriptor& descriptor : descriptors) {
    loop.entries.push_back(describeOne(descriptor, scope));
    if (descriptor.tag == kPrivateDataSpecifierTag) {
      scope.specifier = leadingIdentifier(descriptor.data);
    }
  }
  return loop;
}

}  // namespace tevra::tools
