/* SPDX-License-Identifier: MIT */
/* A body as it lies in a store: what it is, then its elements as they lie in memory.

       | kind | element size | number | count | checksum | element | element | ...

   The checksum, a CRC-32, is of all the rest. The kind is a number that each type of element has of its own. On a machine of
   the other byte order it reads as another, and so do the elements: such a record is refused, not turned. */
#ifndef STATIONS_RECORD_H
#define STATIONS_RECORD_H

#include <cstring>
#include <vector>

#include <zlib.h>

#include "store.h"

namespace stations {

struct record_head {
    std::uint32_t kind, element_size, number, count, checksum;
};

template <class Element>
record_head head_of(std::uint32_t number, std::span<const Element> body)
{
    static_assert(std::has_unique_object_representations_v<Element>, "bytes between members would have any value");
    record_head head = {Element::kind, sizeof(Element), number, static_cast<std::uint32_t>(body.size()), 0};
    const uLong sum = crc32(0, reinterpret_cast<const Bytef *>(&head), offsetof(record_head, checksum));
    head.checksum = static_cast<std::uint32_t>(
        crc32(sum, reinterpret_cast<const Bytef *>(body.data()), static_cast<uInt>(body.size_bytes())));
    return head;
}

template <class Element>
void put_body(store &to, std::uint32_t number, std::span<const Element> body)
{
    const record_head head = head_of(number, body);
    std::vector<std::byte> record(sizeof head + body.size_bytes());
    std::memcpy(record.data(), &head, sizeof head);
    std::memcpy(record.data() + sizeof head, body.data(), body.size_bytes());
    to.put(number, record);
}

/* Copies a record into the body, whose size it must have. */
template <class Element>
void take_body(std::span<const std::byte> record, std::uint32_t number, std::span<Element> body)
{
    const std::string name = "body " + std::to_string(number);
    record_head head;
    if (record.empty())
        throw damage_error(name + " is missing");
    if (record.size() != sizeof head + body.size_bytes())
        throw damage_error(name + " has " + std::to_string(record.size()) + " bytes, not " +
                           std::to_string(sizeof head + body.size_bytes()));
    std::memcpy(&head, record.data(), sizeof head);
    std::memcpy(body.data(), record.data() + sizeof head, body.size_bytes());
    const record_head expected = head_of<Element>(number, body);
    if (head.kind != expected.kind)
        throw damage_error(name + " is none of ours, or was written on a machine of the other byte order");
    if (std::memcmp(&head, &expected, sizeof head) != 0)
        throw damage_error(name + " is damaged: its checksum is wrong");
}

} // namespace stations

#endif
