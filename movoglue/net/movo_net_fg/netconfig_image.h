/** The bytes of the configuration file: a check value of 4 bytes, then one record of 264 bytes per interface. */
#ifndef MOVO_NET_FG_NETCONFIG_IMAGE_H
#define MOVO_NET_FG_NETCONFIG_IMAGE_H

#include "movo_net_internal.h"

#include <cstdint>
#include <span>

namespace movonet {
constexpr std::size_t kCheckSize = 4;
constexpr std::size_t kRecordSize = 264;

using CheckImage = std::span<std::uint8_t, kCheckSize>;
using ConstCheckImage = std::span<const std::uint8_t, kCheckSize>;
using RecordImage = std::span<std::uint8_t, kRecordSize>;
using ConstRecordImage = std::span<const std::uint8_t, kRecordSize>;

void encodeCheck(std::uint32_t from, CheckImage to);
std::uint32_t decodeCheck(ConstCheckImage from);

/** Writes all fields of a record, listed or not; padding, operations and pointers are zero. */
void encodeRecord(const MovoNetIface_t& from, RecordImage to);

/** Reads the fields that outlast a restart, whatever they hold; all others are as in a record that is made anew. */
void decodeRecord(ConstRecordImage from, MovoNetIface_t& to);
} // namespace movonet

#endif
