// What the front ends call of libmount, by its own names.

#include <libmount.h>

#include "base/late/LateLibrary.h"

namespace {

constexpr kestrav::LateLibrary kLibrary("libmount.so.1");

}  // namespace

void mnt_free_iter(libmnt_iter* iterator) {
    kLibrary.function<decltype(mnt_free_iter)>("mnt_free_iter")(iterator);
}

dev_t mnt_fs_get_devno(libmnt_fs* entry) {
    return kLibrary.function<decltype(mnt_fs_get_devno)>("mnt_fs_get_devno")(entry);
}

const char* mnt_fs_get_target(libmnt_fs* entry) {
    return kLibrary.function<decltype(mnt_fs_get_target)>("mnt_fs_get_target")(entry);
}

libmnt_iter* mnt_new_iter(int direction) {
    return kLibrary.function<decltype(mnt_new_iter)>("mnt_new_iter")(direction);
}

libmnt_table* mnt_new_table_from_file(const char* path) {
    return kLibrary.function<decltype(mnt_new_table_from_file)>("mnt_new_table_from_file")(path);
}

int mnt_table_next_fs(libmnt_table* table, libmnt_iter* iterator, libmnt_fs** entry) {
    return kLibrary.function<decltype(mnt_table_next_fs)>("mnt_table_next_fs")(table, iterator, entry);
}

void mnt_unref_table(libmnt_table* table) {
    kLibrary.function<decltype(mnt_unref_table)>("mnt_unref_table")(table);
}
