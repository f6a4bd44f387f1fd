#pragma once

#include <Block.h>

namespace purlock::host_macos {

/// A block's copy on the heap, kept for as long as this lives. The copy is what the system compares when a
/// block is handed to it again.
template <typename Block>
class OwnedBlock {
  public:
    explicit OwnedBlock(Block block) : block_(Block_copy(block)) {}
    ~OwnedBlock() { Block_release(block_); }
    OwnedBlock(const OwnedBlock&) = delete;
    OwnedBlock& operator=(const OwnedBlock&) = delete;

    Block get() const { return block_; }

  private:
    const Block block_;
};

}  // namespace purlock::host_macos
