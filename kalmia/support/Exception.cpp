#include "kalmia/support/Exception.h"

Exception::Exception(const CString& message) : message_(message) {}

Exception::~Exception() = default;
