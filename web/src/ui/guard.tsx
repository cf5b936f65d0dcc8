import type { ComponentChildren } from "preact";
import { useErrorBoundary } from "preact/hooks";
import { errorText } from "../client";
import { Failure } from "./parts";

/** Keeps the rest of the page usable when a view stumbles over something. */
export function Guard({ children }: { children: ComponentChildren }) {
  const [error, reset] = useErrorBoundary();
  if (error === undefined) return <>{children}</>;
  return <Failure text={`Cette vue n’a pas pu s’afficher : ${errorText(error)}`} retry={reset} />;
}
