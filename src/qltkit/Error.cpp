#include <qltkit/Error.h>

namespace qltkit
{

// The destructor is defined here so that only one library contains the type's information. A
// handler in another library then recognises the type.
Error::~Error() = default;

} // namespace qltkit
