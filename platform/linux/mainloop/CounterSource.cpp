#include "platform/linux/mainloop/CounterSource.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace hushbox {

CounterSource::CounterSource(int descriptor, std::function<void()> block)
    : descriptor_(descriptor), block_(std::move(block)) {
  if (descriptor_ < 0) {
    std::perror("hushbox: cannot set up the main loop");
    std::abort();
  }
  source_ = g_unix_fd_source_new(descriptor_, G_IO_IN);
  g_source_set_callback(source_, G_SOURCE_FUNC(dispatch), this, nullptr);
  g_source_attach(source_, nullptr);
}

CounterSource::~CounterSource() {
  g_source_destroy(source_);
  g_source_unref(source_);
  close(descriptor_);
}

gboolean CounterSource::dispatch(gint descriptor, GIOCondition, gpointer self) {
  std::uint64_t count = 0;
  if (read(descriptor, &count, sizeof count) == sizeof count)
    static_cast<CounterSource*>(self)->block_();
  return G_SOURCE_CONTINUE;
}

}  // namespace hushbox
