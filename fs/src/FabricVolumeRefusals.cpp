// Everything that would change the tree. Nothing is looked at, logged or sent to the host.
#include "fs/FabricVolume.h"

namespace tarnel {
namespace {

constexpr VolumeError readOnly = posixError(darwin::readOnly);

}  // namespace

void FabricVolume::createItem(const NamedItemReply& reply) const {
  reply(nullptr, std::nullopt, readOnly);
}

void FabricVolume::createSymbolicLink(const NamedItemReply& reply) const {
  reply(nullptr, std::nullopt, readOnly);
}

void FabricVolume::createLink(const NameReply& reply) const { reply(std::nullopt, readOnly); }

void FabricVolume::removeItem(const ErrorReply& reply) const { reply(readOnly); }

void FabricVolume::renameItem(const NameReply& reply) const { reply(std::nullopt, readOnly); }

void FabricVolume::setAttributes(const AttributesReply& reply) const {
  reply(std::nullopt, readOnly);
}

void FabricVolume::write(const CountReply& reply) const { reply(0, readOnly); }

void FabricVolume::readSymbolicLink(const NameReply& reply) const {
  reply(std::nullopt, posixError(darwin::invalidArgument));
}

}  // namespace tarnel
