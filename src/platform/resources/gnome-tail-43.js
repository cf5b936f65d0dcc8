
function init() {
    return new FocusReporter();
}
