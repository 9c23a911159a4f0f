#pragma once

#include <exception>
#include <string>
#include <type_traits>
#include <utility>

#include "kestrel/Export.h"

namespace Kestrel {

class KESTREL_API KestrelException : public std::exception {
 public:
  template <typename T,
            typename = std::enable_if_t<std::is_constructible<std::string, T&&>::value &&
                                        !std::is_base_of<KestrelException, std::decay_t<T>>::value>>
  explicit KestrelException(T&& message) : message_(std::forward<T>(message)) {}
  KestrelException(const KestrelException& other);
  KestrelException& operator=(const KestrelException& other);
  ~KestrelException() override;  // out of line: one type_info for library and plug-ins
  const char* what() const noexcept override;

 private:
  std::string message_;
};

}  // namespace Kestrel
