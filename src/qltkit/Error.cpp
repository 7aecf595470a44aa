#include <qltkit/Error.h>

namespace qltkit
{

// Here, so that one library has the type's information and a handler in another one finds it.
Error::~Error() = default;

} // namespace qltkit
