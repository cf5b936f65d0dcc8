// Stands in for the web view's end of the bridge: what the page posts goes to the development server.
window.__unanswered = 0;
window.webkit ??= {
  messageHandlers: {
    api: {
      async postMessage(message) {
        window.__unanswered++;
        try {
          const response = await fetch("/ask", { method: "POST", body: JSON.stringify(message) });
          const { id, answer } = await response.json();
          window.__resolve(id, answer);
        } finally {
          window.__unanswered--;
        }
      },
    },
  },
};
