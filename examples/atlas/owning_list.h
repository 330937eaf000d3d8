/* SPDX-License-Identifier: MIT */
/* How a C++ program owns what it keeps in a pointer list.

   The list stores pointers and never looks at what they point to, so somebody has to say how an item dies. Here that is the
   callback of GL_total_release: it is called with the address of each node's item field, before that node is freed.

   The records themselves are made with std::make_unique and handed over with `append`. For everything else the GL_
   functions are called directly, on `get()`. */
#ifndef ATLAS_OWNING_LIST_H
#define ATLAS_OWNING_LIST_H

#include <memory>
#include <utility>

#include <mova/lists/generic_list.h>

namespace atlas {

template <class Record>
class OwningList {
public:
    OwningList() : list_(GL_create()) {}
    OwningList(OwningList &&other) noexcept : list_(std::exchange(other.list_, nullptr)) {}

    /* GL_total_release, unlike GL_release, wants a list: one that was moved away is null. */
    ~OwningList()
    {
        if (list_)
            GL_total_release(&list_, free_record);
    }

    GL_list *get() const { return list_; }

    /* Adds a record at the back. The list owns it once its node is there. */
    Record *append(std::unique_ptr<Record> record)
    {
        GL_append_after_last(list_, record.get());
        return record.release();
    }

    /* Frees the record and its node. */
    void remove(GL_node *position)
    {
        free_record(&position->item);
        GL_remove_item(list_, position);
    }

private:
    static void free_record(void **item) { delete static_cast<Record *>(*item); }

    GL_list *list_;
};

/* Returns the next item as what it is, or null when the iteration is over. */
template <class Record>
Record *next_record(GL_iterator &iterator)
{
    void *item = nullptr;
    return GL_next_item(&iterator, &item) ? static_cast<Record *>(item) : nullptr;
}

} // namespace atlas

#endif
