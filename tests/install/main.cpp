// A state document changes an entity, its watcher writes a row, the chip has it.

#include <iostream>

#include "Lamp.h"
#include "platform/asic/SimulatedChip.h"
#include "platform/document/Document.h"
#include "platform/kilnsharedmem/EntityManager.h"
#include "platform/local/EntityManager.h"
#include "platform/stateway/EntityManager.h"

int main() {
  auto const profile = Dovel::make<Asic::ChipProfile>("lamps");
  profile->tableIs("LampTable", {.rows = 8, .base = 0});
  auto driver = std::make_unique<Asic::SimulatedChip>(profile);
  auto const* const sim = driver.get();
  auto const chip = Dovel::make<Asic::Chip>(profile, std::move(driver));
  auto const table = Dovel::make<Consumer::LampTable>("LampTable");
  Asic::bringUp(*table, nullptr, Asic::ChipInfo(chip));

  Stateway::AgentStores const stores{Dovel::make<Stateway::EntityManager>(), Dovel::make<Local::EntityManager>(),
                                     Dovel::make<KilnSharedMem::EntityManager>("lamps")};
  auto const lamp = stores.local->doMount<Consumer::Lamp>("hall");
  auto const sm = Dovel::make<Consumer::LampSm>(table);
  sm->lampIs(lamp);
  try {
    auto const document =
        Stateway::StateDocument::parse(R"({"local": {"hall": {"brightness": 7, "scene": {"2": 1}}}})");
    Stateway::check(document, stores);
    Stateway::apply({}, document, stores);
    Stateway::check(Stateway::StateDocument::parse(R"({"local": {"hall": {"brightness": 256}}})"), stores);
  } catch (Kiln::InputError const& error) {
    std::cout << error.place() << " " << error.value() << ": " << error.problem() << "\n";
  }
  std::cout << sim->dump();
  return lamp->scene(2) == 1 && sim->field("LampTable", table->index(1).value(), "level") == 7 ? 0 : 1;
}
