#pragma once

namespace rig {

/// Owns one file descriptor and closes it at the end of its life. -1: none.
class Descriptor {
 public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return number_; }
    bool IsOpen() const { return number_ != -1; }
    void Close();

 private:
    int number_ = -1;
};

}  // namespace rig
