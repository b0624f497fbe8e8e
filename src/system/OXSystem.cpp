#include "OXSystem.h"

OXSystem::OXSystem() = default;
OXSystem::~OXSystem() noexcept = default;
