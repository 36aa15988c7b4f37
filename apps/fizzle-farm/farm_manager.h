// A workload manager fizzle-farm submits to. Only Slurm is built; another
// (a queue of its own, a cloud batch service) implements the same three calls.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "farm_plan.h"

class FarmManager {
public:
    virtual ~FarmManager() = default;
    // Submits the cache fill (when plan.fill_last() >= 1) and then the
    // chunks, which start only once the fill succeeded; records the job ids
    // in plan. Throws sparkhost::Error with the manager's own words.
    virtual void submit(FarmPlan &plan) = 0;
    // What the manager says of each chunk it still knows (index to a state
    // such as "PENDING", "RUNNING", "FAILED"; "UNKNOWN" when it could not
    // be asked); chunks it forgot are absent.
    virtual std::map<int, std::string> chunk_states(const FarmPlan &plan) = 0;
    // The fill job's state, or "" when the manager no longer knows it.
    virtual std::string fill_state(const FarmPlan &plan) = 0;
};

// Throws sparkhost::Error for a manager that is not built.
std::unique_ptr<FarmManager> make_farm_manager(const std::string &name);
