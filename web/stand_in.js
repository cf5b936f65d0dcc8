// Stands in for the web view's end of the bridge: what the page posts goes to the development server.
window.webkit ??= {
  messageHandlers: {
    api: {
      async postMessage(message) {
        const response = await fetch("/ask", { method: "POST", body: JSON.stringify(message) });
        const { id, answer } = await response.json();
        window.__resolve(id, answer);
      },
    },
  },
};
