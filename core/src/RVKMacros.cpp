#include "RVKMacros.h"

namespace rvk_detail {

void failAssertion(RVKFileLocation const& where, char const* text)
{
    RVKAssertError(0, text).hurl(where, nullptr, "RVK_THROW");
}

}  // namespace rvk_detail
