#pragma once

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class KESTREL_API MetaInt : public MetaObject {
 public:
  MetaInt(long value, FactoryFlag flag);
  static const std::shared_ptr<MetaInt>& New();
  static std::shared_ptr<MetaInt> New(long value);
  long GetValue() const;
  std::string ToString() const override;
  static bool Init();
  static bool _sInitialized;

 private:
  long value_;
};

}  // namespace Kestrel::MetaObj
