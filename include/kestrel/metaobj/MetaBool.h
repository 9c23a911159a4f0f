#pragma once

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class KESTREL_API MetaBool : public MetaObject {
 public:
  MetaBool(bool value, FactoryFlag flag);
  static const std::shared_ptr<MetaBool>& New();
  static const std::shared_ptr<MetaBool>& New(bool value);
  bool GetValue() const;
  std::string ToString() const override;
  static bool Init();
  static bool _sInitialized;

 private:
  bool value_;
};

}  // namespace Kestrel::MetaObj
