#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/agent/World.h"
#include "host/notes/Notes.h"
#include "platform/asic/SimulatedChip.h"
#include "platform/document/Document.h"
#include "platform/kiln/Clock.h"
#include "platform/kiln/Log.h"
#include "platform/local/EntityManager.h"
#include "platform/plugin/L3MounterBase.h"
#include "platform/plugin/Loader.h"
#include "platform/stateway/EntityManager.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/VaneTunnel.h"

namespace Host {

class TunnelProducer;
class TunnelSmGate;
class VniMirror;

/// The plug-in of this installation: found from the place of the running program.
std::filesystem::path defaultPlugin();

/// An agent process in one object: chip, stores, the feature's plug-in, the forwarding abstraction above it, and the
/// loop.
///
/// In: state documents and faults of the chip. Out: rows of the chip, status, operator messages. All work is done
/// inside the calls: a document is applied, or the loop turns, and nothing is pending when the call returns.
///
///   started (the plug-in's mounter exists and the feature runs) ⇄ feature stopped → stopped
///
/// Main thread only, one agent with a virtual clock or with messages captured at a time. Owns all of it; the feature is
/// destroyed before what it shares.
class Agent {
 public:
  /// When the forwarding abstraction reports that it is ready: both orders of the feature's two gates occur.
  enum class Ready {
    fromLoop,  ///< With the loop's next turn: after the feature's tables are up.
    atOnce,    ///< As soon as the status objects exist: before the feature's tables are up.
  };
  struct Options {
    std::string profile = "cascaded";                   ///< The name of a profile that is built in, or a file.
    Dovel::Ptr<Asic::ChipProfile const> chipProfile{};  ///< Used in place of `profile` unless null.
    Asic::Completion completion = Asic::Completion::direct;
    std::filesystem::path plugin = defaultPlugin();
    std::string mounterType = "TesselVxlan::TesselVxlanMounter";
    Ready ready = Ready::fromLoop;
    bool virtualClock = false;  ///< Time advances only by `clock()`.
    /// What a former agent has stored for an upgrade, restored before the feature starts; null: nothing. It passes
    /// `checkUpgrade`.
    std::shared_ptr<Kiln::JsonDocument const> upgrade{};
    bool producers = true;  ///< False: the caller writes the tunnels' configuration entries itself.
  };

  /// Started and settled. Throws `InputError` and `Plugin::LoadError`.
  explicit Agent(Options options);
  Agent() : Agent(Options()) {}
  ~Agent();
  Agent(Agent const&) = delete;
  Agent& operator=(Agent const&) = delete;

  /// Throws `InputError` if the document can't be applied.
  void check(Stateway::StateDocument const& document) const;
  /// Applies `document` and settles; returns the result of `settle`. Attributes that the previous document named and
  /// this one doesn't are reset. Throws as `check`; then nothing has changed.
  bool apply(Stateway::StateDocument document);
  /// The same for a text; `source` names it in errors. Throws `InputError` also for one that is no JSON.
  bool apply(std::string_view json, std::string const& source = "document");

  /// Turns the loop until nothing is left to do: one review of the forwarding abstraction, one round of the chip's
  /// completions or one round of due work at a time. False if completions are held back, or after `turnLimit` turns.
  bool settle();
  /// One turn of the loop. False if there was nothing to do.
  bool turn();
  static constexpr std::size_t turnLimit = 100'000;
  /// The result of the last `settle`.
  bool settled() const { return settled_; }

  /// Ends what ends with the agent's process: the feature, the forwarding abstraction, the local store, and pending
  /// write responses. The state database and the chip's rows stay. REQUIRES: not called from inside the loop.
  void stopFeature();
  /// Loads the plug-in, runs the feature's start and settles, as a new process would. Throws `Plugin::LoadError`.
  /// REQUIRES: no feature runs.
  void startFeature();
  /// Both, and the present document again: a restart of the process. Returns the result of `settle`.
  bool restart();
  /// Stops the feature and releases the rest. Returns how many objects leaked: those alive now that were not before the
  /// agent was constructed.
  std::size_t stop();

  // For inspection and for tests. REQUIRES: not stopped.
  Asic::Chip& chip() const { return *world_->chip; }
  Asic::ChipProfile const& profile() const { return *world_->chip->profile(); }
  /// For injecting faults: writes that the chip refuses.
  Asic::SimulatedChip& driver() const { return *world_->driver; }
  Stateway::AgentStores const& stores() const { return world_->stores; }
  World const& world() const { return *world_; }
  /// The document that was applied last.
  Stateway::StateDocument const& document() const { return document_; }
  /// What the present document says beyond its state.
  Notes const& notes() const { return notes_; }
  /// The entity at a path of the state database; null if it isn't mounted or of another type.
  template <class T>
  Dovel::Ptr<T> state(std::string_view path) const {
    return world_->stores.stateway->getEntity<T>(path);
  }
  /// The same of the local store.
  template <class T>
  Dovel::Ptr<T> local(std::string_view path) const {
    return world_->stores.local->getEntity<T>(path);
  }
  /// Wanted tunnels as the document states them; null for a type that has none.
  Dovel::Ptr<Vane::VaneTunnelConfig> wantedTunnels(Vane::TunnelType type) const;
  /// The ids that were assigned to them.
  Dovel::Ptr<Vane::VaneTunnelStatus> publishedTunnels(Vane::TunnelType type) const;
  Dovel::Ptr<Vane::HwTunnelConfig> hwTunnelConfig(Vane::TunnelType type) const;
  Dovel::Ptr<Vane::HwTunnelStatus> hwTunnelStatus(Vane::TunnelType type) const;
  Dovel::Ptr<TesselL3Unicast::L3MounterBase> const& mounter() const { return mounter_; }
  Kiln::LogCapture& logs() { return logs_; }
  Kiln::LogCapture const& logs() const { return logs_; }
  /// Null unless the clock is virtual.
  Kiln::VirtualClock* clock() { return clock_.get(); }

 private:
  void makeMounter();
  void restoreUpgrade();
  void makeProducers();
  void bindStatus();
  bool review();
  void mirrorVnis();

  std::size_t aliveBefore_;
  Options options_;
  Kiln::LogCapture logs_;
  std::unique_ptr<Kiln::VirtualClock> clock_;
  std::optional<Kiln::ClockScope> clockScope_;
  Plugin::Loader loader_;
  std::unique_ptr<World> world_;
  Dovel::Ptr<TesselL3Unicast::L3MounterBase> mounter_;
  Dovel::Ptr<TunnelSmGate> gate_;
  std::vector<Dovel::Ptr<TunnelProducer>> producers_;
  Dovel::Ptr<VniMirror> vniMirror_;  ///< Null unless the feature owns its mappings of VNIs.
  Stateway::StateDocument document_;
  Notes notes_;
  bool settled_ = false;
};

}  // namespace Host
