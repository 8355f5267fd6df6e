#include "kalmia/support/NCError.h"

NCError::NCError() : Exception("") {}

NCError::NCError(const CString& message) : Exception(message) {}

NCError::NCError(const CString& message, Level level) : Exception(message), level_(level) {}

NCError::~NCError() = default;

NCError* NCError::Clone() const { return new NCError(*this); }
