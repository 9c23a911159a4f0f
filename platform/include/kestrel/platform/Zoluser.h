#pragma once

#include <sys/types.h>

#include <cstddef>

extern "C" {
typedef int ZoluserStatus;  // 0 = success; the stand-in uses errno values
typedef struct ZoluserForkFd {
  int childFd;
  int parentFd;
} ZoluserForkFd;
ZoluserStatus ZoluserCompat_ForkExec(
    const char* path, const char* const* argv, const char* const* envp, const ZoluserForkFd* fdMap,
    std::size_t fdCount,
    pid_t* childPid);  // envp NULL = inherit; only mapped descriptors survive in the child
const char* ZoluserStatus_CodeToString(ZoluserStatus status);
}
