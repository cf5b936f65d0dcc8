// A page that asks what the test tells it to.
const api = window.webkit.messageHandlers.api;
const waiting = new Map();
let next = 1000;
window.answers = [];
window.__resolve = (id, answer) => {
  window.answers.push([id, answer]);
  waiting.get(id)?.(answer);
};
window.post = (message) => api.postMessage(message);
window.ask = (path, body) => new Promise((done) => {
  const id = next++;
  waiting.set(id, done);
  api.postMessage({ id, path, body });
});
localStorage.loads = Number(localStorage.loads ?? 0) + 1;
