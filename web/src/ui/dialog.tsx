import { type ComponentChildren, createContext } from "preact";
import { useContext, useId, useLayoutEffect, useRef } from "preact/hooks";
import { Icon } from "./icons";
import { Button, IconButton } from "./parts";
import { elsewhere } from "./roving";
import { Said } from "./said";
import { useTask } from "./task";

type Action = () => Promise<void> | void;

/** What the parts of a dialogue share with it. */
interface Held {
  busy: { readonly current: boolean };
  /** Runs what its buttons and forms do, one at a time. */
  once: (action: Action) => Promise<void>;
  /** Closes it, unless how that went is not known yet: it is told here. */
  close: () => void;
}
const Around = createContext<Held | null>(null);

function useHeld(onClose: () => void): Held {
  const busy = useRef(false);
  const once = async (action: Action) => {
    if (busy.current) return;
    busy.current = true;
    try {
      await action();
    } finally {
      busy.current = false;
    }
  };
  return { busy, once, close: () => busy.current || onClose() };
}

interface DialogProps {
  title: string;
  onClose: () => void;
  children: ComponentChildren;
  wide?: boolean | undefined;
}

/**
 * A modal dialogue: Escape and the cross close it, the focus goes back to where it was. While the answer to
 * what was done in it is awaited it stays, and does nothing more.
 */
export function Dialog({ title, onClose, children, wide }: DialogProps) {
  const ref = useRef<HTMLDialogElement>(null);
  const held = useHeld(onClose);
  const heading = useId();
  // Before the engine looks at it: what it first meets unrendered it may tell screen readers without its text.
  useLayoutEffect(() => {
    const before = document.activeElement;
    ref.current?.showModal();
    // Nothing to fill in: the reading starts at the title.
    if (!ref.current?.querySelector("[autofocus]")) ref.current?.querySelector("h2")?.focus();
    // When it is gone: until then it has the focus, and what lies beneath can have none.
    const giveBack = () => {
      if (document.activeElement !== document.body) return; // somebody knew better
      const known = before !== document.body && before instanceof HTMLElement;
      const home = known && (before.isConnected ? before : elsewhere(before));
      (home || document.querySelector("main"))?.focus();
    };
    return () => queueMicrotask(giveBack);
  }, []);
  return (
    <dialog
      ref={ref}
      class={wide ? "dialog wide" : "dialog"}
      aria-labelledby={heading}
      onCancel={(event) => {
        event.preventDefault();
        held.close();
      }}
      onKeyDown={(event) => {
        event.stopPropagation();
        // A second one a browser may not let be refused.
        if (event.key === "Escape" && held.busy.current) event.preventDefault();
      }}
    >
      <header class="dialog-head">
        <h2 id={heading} tabIndex={-1}>
          {title}
        </h2>
        <IconButton kind="ghost square" icon="close" label="Fermer" onClick={held.close} />
      </header>
      <Around.Provider value={held}>{children}</Around.Provider>
    </dialog>
  );
}

interface ConfirmProps {
  title: string;
  children: ComponentChildren;
  action: string;
  danger?: boolean;
  /** What would happen is not known yet, or nothing would. */
  disabled?: boolean;
  wide?: boolean;
  onConfirm: () => Promise<void> | void;
  onClose: () => void;
}

/** Asks before something that loses or replaces what is there. */
export function Confirm({ title, children, wide, ...foot }: ConfirmProps) {
  return (
    <Dialog title={title} onClose={foot.onClose} wide={wide}>
      <div class="dialog-body prose">{children}</div>
      <ConfirmFoot {...foot} />
    </Dialog>
  );
}

function ConfirmFoot({ action, danger, disabled, onConfirm, onClose }: Omit<ConfirmProps, "title" | "children">) {
  const held = useContext(Around);
  const { busy, error, run } = useTask();
  const confirm = async () => {
    await onConfirm();
    onClose();
  };
  return (
    <>
      <FormError text={error} />
      <footer class="dialog-foot">
        <Button autoFocus onClick={held?.close}>
          Annuler
        </Button>
        <Button
          kind={danger ? "danger" : "primary"}
          disabled={disabled}
          aria-disabled={busy}
          onClick={() => held?.once(() => run(confirm))}
        >
          {action}
        </Button>
      </footer>
    </>
  );
}

interface FormProps {
  id?: string;
  class?: string;
  "aria-labelledby"?: string;
  children: ComponentChildren;
  onSubmit: Action;
}

/** A form that the page itself checks and sends, not again before that is done. */
export function Form({ onSubmit, ...rest }: FormProps) {
  const alone = useHeld(() => {});
  const { once } = useContext(Around) ?? alone;
  return (
    <form
      noValidate
      {...rest}
      onSubmit={(event) => {
        event.preventDefault();
        void once(onSubmit);
      }}
    />
  );
}

export function FormError({ text }: { text: string }) {
  return (
    <Said class="form-error" role="alert" text={text}>
      <Icon name="warning" />
      {text}
    </Said>
  );
}

interface FootProps {
  error: string;
  /** What sending the form is called. */
  action?: string;
}

/** What ends the form of an editor: what is wrong, and the two ways out. */
export function EditorFoot({ error, action = "Enregistrer" }: FootProps) {
  const held = useContext(Around);
  return (
    <>
      <FormError text={error} />
      <footer class="dialog-foot">
        <Button onClick={held?.close}>Annuler</Button>
        <Button type="submit" kind="primary">
          {action}
        </Button>
      </footer>
    </>
  );
}
