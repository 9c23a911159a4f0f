// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/Archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>

#include "plugins/host/file/RegularFile.h"
#include "plugins/host/frame/LoadedLibrary.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

struct Libarchive : LoadedLibrary {
  Libarchive() : LoadedLibrary(KESTREL_HOST_LIBARCHIVE) {}
  KESTREL_LOADED(archive_entry_filetype);
  KESTREL_LOADED(archive_entry_free);
  KESTREL_LOADED(archive_entry_gid);
  KESTREL_LOADED(archive_entry_gname);
  KESTREL_LOADED(archive_entry_gname_utf8);
  KESTREL_LOADED(archive_entry_hardlink);
  KESTREL_LOADED(archive_entry_mtime);
  KESTREL_LOADED(archive_entry_mtime_is_set);
  KESTREL_LOADED(archive_entry_new2);
  KESTREL_LOADED(archive_entry_pathname);
  KESTREL_LOADED(archive_entry_pathname_utf8);
  KESTREL_LOADED(archive_entry_size);
  KESTREL_LOADED(archive_entry_strmode);
  KESTREL_LOADED(archive_entry_symlink);
  KESTREL_LOADED(archive_entry_uid);
  KESTREL_LOADED(archive_entry_uname);
  KESTREL_LOADED(archive_entry_uname_utf8);
  KESTREL_LOADED(archive_error_string);
  KESTREL_LOADED(archive_read_free);
  KESTREL_LOADED(archive_read_new);
  KESTREL_LOADED(archive_read_next_header2);
  KESTREL_LOADED(archive_read_open_fd);
  KESTREL_LOADED(archive_read_set_callback_data);
  KESTREL_LOADED(archive_read_support_filter_bzip2);
  KESTREL_LOADED(archive_read_support_filter_gzip);
  KESTREL_LOADED(archive_read_support_filter_xz);
  KESTREL_LOADED(archive_read_support_filter_zstd);
  KESTREL_LOADED(archive_read_support_format_tar);
  KESTREL_LOADED(archive_read_support_format_zip);
};

const Libarchive& Library() {
  static const Libarchive library;
  return library;
}

struct CloseArchive {
  void operator()(archive* reader) const { Library().archive_read_free(reader); }
};
using Reader = std::unique_ptr<archive, CloseArchive>;

struct FreeEntry {
  void operator()(archive_entry* entry) const { Library().archive_entry_free(entry); }
};
using Entry = std::unique_ptr<archive_entry, FreeEntry>;

using StringOf = const char* (*)(archive_entry*);

// Returns the result of `first`, otherwise that of `other`; empty if both return null. Calls
// `other` only if it is needed, because it may convert the string, which takes time.
std::string FirstOf(archive_entry* entry, StringOf first, StringOf other) {
  const char* text = first(entry);
  if (text == nullptr) {
    text = other(entry);
  }
  return text == nullptr ? std::string() : text;
}

std::string KindOf(archive_entry* entry) {
  if (Library().archive_entry_hardlink(entry) != nullptr) {
    return "hardlink";
  }
  switch (Library().archive_entry_filetype(entry)) {
    case AE_IFDIR:
      return "folder";
    case AE_IFLNK:
      return "link";
    case AE_IFIFO:
      return "pipe";
    case AE_IFSOCK:
      return "socket";
    case AE_IFCHR:
    case AE_IFBLK:
      return "device";
    default:
      return "file";
  }
}

ArchiveMember ToMember(archive_entry* entry) {
  ArchiveMember member;
  member.name =
      FirstOf(entry, Library().archive_entry_pathname, Library().archive_entry_pathname_utf8);
  member.kind = KindOf(entry);
  member.mode = Trim(Library().archive_entry_strmode(entry));
  member.user = FirstOf(entry, Library().archive_entry_uname, Library().archive_entry_uname_utf8);
  member.group = FirstOf(entry, Library().archive_entry_gname, Library().archive_entry_gname_utf8);
  member.userId = Library().archive_entry_uid(entry);
  member.groupId = Library().archive_entry_gid(entry);
  member.size = Library().archive_entry_size(entry);
  if (Library().archive_entry_mtime_is_set(entry) != 0) {
    member.modified = Library().archive_entry_mtime(entry);
  }
  member.target = FirstOf(entry, Library().archive_entry_symlink, Library().archive_entry_hardlink);
  return member;
}

void RequireMemory(bool isAllocated) {
  if (!isAllocated) {
    throw KestrelException("Unable to read archives: Cannot allocate memory");
  }
}

// libarchive allocates memory when a callback is first set, and later does not check whether that
// failed. So the first callback is set here, where the result can be checked.
Reader NewReader() {
  Reader reader(Library().archive_read_new());
  RequireMemory(reader != nullptr);
  RequireMemory(Library().archive_read_set_callback_data(reader.get(), nullptr) == ARCHIVE_OK);
  Library().archive_read_support_format_tar(reader.get());
  Library().archive_read_support_format_zip(reader.get());
  Library().archive_read_support_filter_gzip(reader.get());
  Library().archive_read_support_filter_bzip2(reader.get());
  Library().archive_read_support_filter_xz(reader.get());
  Library().archive_read_support_filter_zstd(reader.get());
  return reader;
}

[[noreturn]] void ThrowArchiveError(const std::string& path, archive& reader) {
  const char* const reason = Library().archive_error_string(&reader);
  ThrowReadError(path, SanitizedText(reason == nullptr ? "Damaged archive" : reason)->GetValue());
}

}  // namespace

void VisitArchive(const std::string& path, const std::function<void(const ArchiveMember&)>& visit) {
  constexpr std::size_t kReadSize = 1 << 17;
  const FileDescriptor file = OpenRegularFile(path);
  const Reader reader = NewReader();
  const Entry entry(Library().archive_entry_new2(reader.get()));
  RequireMemory(entry != nullptr);
  if (Library().archive_read_open_fd(reader.get(), file.Get(), kReadSize) != ARCHIVE_OK) {
    ThrowArchiveError(path, *reader);
  }
  for (;;) {
    const int result = Library().archive_read_next_header2(reader.get(), entry.get());
    if (result == ARCHIVE_EOF) {
      return;
    }
    // Warnings are ignored: they concern data that is not listed, or a name that is not valid text.
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) {
      ThrowArchiveError(path, *reader);
    }
    visit(ToMember(entry.get()));
  }
}

}  // namespace Kestrel::Host
