#include "rig/base/Descriptor.h"

#include <unistd.h>

#include <utility>

namespace rig {

Descriptor::~Descriptor() {
    Close();
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        Close();
        number_ = std::exchange(other.number_, -1);
    }
    return *this;
}

void Descriptor::Close() {
    if (number_ != -1) {
        close(std::exchange(number_, -1));
    }
}

}  // namespace rig
