#include "protocol/VelProtocolBase.h"

VelProtocolBase::VelProtocolBase(const TestOptions& options, int connectedFd)
    : closeEarly(options.closeEarly),
      doneDuration(options.doneDuration),
      sleepForGetFile(options.sleepForGetFile),
      protocol(options.protocol),
      rehash(options.rehash),
      invalidEvent(options.invalidEvent),
      invalidFile(options.invalidFile),
      transportException(options.transportException),
      xferInProgress(options.xferInProgress),
      upgrade(options.upgrade),
      sizeError(options.sizeError),
      configUpdate(options.configUpdate),
      socketFd(connectedFd) {}
