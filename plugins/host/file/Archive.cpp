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
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

struct CloseArchive {
  void operator()(archive* reader) const { ::archive_read_free(reader); }
};
using Reader = std::unique_ptr<archive, CloseArchive>;

using StringOf = const char* (*)(archive_entry*);

// Returns a string of the entry. Calls `other` only if `first` has no result, because `other`
// converts the string, which takes time.
std::string FirstOf(archive_entry* entry, StringOf first, StringOf other) {
  const char* text = first(entry);
  if (text == nullptr) {
    text = other(entry);
  }
  return text == nullptr ? std::string() : text;
}

std::string KindOf(archive_entry* entry) {
  if (::archive_entry_hardlink(entry) != nullptr) {
    return "hardlink";
  }
  switch (::archive_entry_filetype(entry)) {
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
  member.name = FirstOf(entry, ::archive_entry_pathname, ::archive_entry_pathname_utf8);
  member.kind = KindOf(entry);
  member.mode = Trim(::archive_entry_strmode(entry));
  member.user = FirstOf(entry, ::archive_entry_uname, ::archive_entry_uname_utf8);
  member.group = FirstOf(entry, ::archive_entry_gname, ::archive_entry_gname_utf8);
  member.userId = ::archive_entry_uid(entry);
  member.groupId = ::archive_entry_gid(entry);
  member.size = ::archive_entry_size(entry);
  if (::archive_entry_mtime_is_set(entry) != 0) {
    member.modified = ::archive_entry_mtime(entry);
  }
  member.target = FirstOf(entry, ::archive_entry_symlink, ::archive_entry_hardlink);
  return member;
}

Reader NewReader() {
  Reader reader(::archive_read_new());
  if (reader == nullptr) {
    throw KestrelException("Unable to read archives: Cannot allocate memory");
  }
  ::archive_read_support_format_tar(reader.get());
  ::archive_read_support_format_zip(reader.get());
  ::archive_read_support_filter_gzip(reader.get());
  ::archive_read_support_filter_bzip2(reader.get());
  ::archive_read_support_filter_xz(reader.get());
  ::archive_read_support_filter_zstd(reader.get());
  return reader;
}

[[noreturn]] void ThrowArchiveError(const std::string& path, archive& reader) {
  const char* const reason = ::archive_error_string(&reader);
  ThrowReadError(path, SanitizedText(reason == nullptr ? "Damaged archive" : reason)->GetValue());
}

}  // namespace

void VisitArchive(const std::string& path, const std::function<void(const ArchiveMember&)>& visit) {
  constexpr std::size_t kReadSize = 1 << 17;
  const FileDescriptor file = OpenRegularFile(path);
  const Reader reader = NewReader();
  if (::archive_read_open_fd(reader.get(), file.Get(), kReadSize) != ARCHIVE_OK) {
    ThrowArchiveError(path, *reader);
  }
  for (;;) {
    archive_entry* entry = nullptr;
    const int result = ::archive_read_next_header(reader.get(), &entry);
    if (result == ARCHIVE_EOF) {
      return;
    }
    // A warning concerns data that is not listed, or a name that is not valid text.
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) {
      ThrowArchiveError(path, *reader);
    }
    visit(ToMember(entry));
  }
}

}  // namespace Kestrel::Host
