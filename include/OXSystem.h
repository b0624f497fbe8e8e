#ifndef ORVABASE_OXSYSTEM_H
#define ORVABASE_OXSYSTEM_H

#include "OXException.h"

/// The common base of the failures of what asks the operating system about the process, the machine
/// and its accounts.
class ORVABASE_EXPORT OXSystem : public OXAutoException {
public:
    ~OXSystem() noexcept override;

protected:
    OXSystem();
};

#endif
