/// The program's entry. Its result is 0, or the low byte's worth of the status that stopped the
/// start.
#include "QM_main.h"
#include "carbon_events.h"

int main() {
  const SInt32 status = QM_Start();
  if (status != noErr) return status;
  RunApplicationEventLoop();
  return 0;
}
