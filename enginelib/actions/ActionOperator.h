// A visitor of the actions of an ActionSet (ActionSet::Operate).
#pragma once

class Action;

class ActionOperator {
public:
    virtual ~ActionOperator() = default;
    // True: go on with the next action; false: stop the walk.
    virtual bool operator()(Action* action) = 0;
};
