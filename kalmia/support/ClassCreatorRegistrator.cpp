#include <map>
#include <string>
#include <typeinfo>

#include "kalmia/support/VexStream.h"

namespace {

struct Registry {
  std::map<std::string, VexStreamBase* (*)()> creators;  ///< by plain name
  std::map<std::string, std::string> names;              ///< plain name by run-time type name
};

/// Made by the first registration, whichever static initialiser that is.
Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

ClassCreatorRegistrator::ClassCreatorRegistrator(const char* typeName, const char* name, VexStreamBase* (*creator)()) {
  TheRegistry().creators[name] = creator;
  TheRegistry().names[typeName] = name;
}

VexStreamBase* ClassCreatorRegistrator::Create(const char* name) {
  const auto& creators = TheRegistry().creators;
  const auto found = name ? creators.find(name) : creators.end();
  return found == creators.end() ? nullptr : found->second();
}

const char* ClassCreatorRegistrator::NameOf(const VexStreamBase& object) {
  const auto& names = TheRegistry().names;
  const auto found = names.find(typeid(object).name());
  return found == names.end() ? nullptr : found->second.c_str();
}
