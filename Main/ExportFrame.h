// The frame of one export call: it checks that the platform can serve the call (a simulated
// machine whose folder is missing cannot, and says why on standard error), and at the end of
// the call it has the platform make its state durable.
#pragma once

class ExportFrame {
public:
    ExportFrame();
    ~ExportFrame();
    ExportFrame(const ExportFrame&) = delete;
    ExportFrame& operator=(const ExportFrame&) = delete;

    bool Ready() const { return mReady; }

private:
    bool mReady;
};
