// Lists every device with its slot and its trigger bus.
#include <iostream>
#include <varmex/varmex.hpp>

int main() try {
  const varmex::Session session;
  for (const varmex::Device& device : session.devices()) {
    std::cout << device.name() << "  " << device.bus() << ':' << device.number() << '.'
              << device.function() << "  " << device.slot().triggerBusNameIfAny().value_or("-")
              << '\n';
  }
} catch (const varmex::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
