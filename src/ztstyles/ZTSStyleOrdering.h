#pragma once

namespace zt {

class ZTSAnonymousStyleOrderingMap {};

}  // namespace zt
